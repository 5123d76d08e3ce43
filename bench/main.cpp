// What the agent costs beyond what its work costs bare. Exits 1 when a ratio is above its bound.
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "bench/bench.h"
#include "host/handset/handset.h"

int main(int argc, char** argv) {
  const std::filesystem::path here = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  const std::filesystem::path file = argc > 1 ? std::filesystem::path(argv[1]) : here / "../src" / QV_AGENT_FILE;
  // In memory where the host has such a place: what is measured is the work and not the disk.
  const std::filesystem::path memory = "/dev/shm";
  const bool has_memory = std::filesystem::is_directory(memory);
  std::string root = ((has_memory ? memory : std::filesystem::temp_directory_path()) / "handset-XXXXXX").string();
  if (mkdtemp(root.data()) == nullptr) bench::Die("cannot make a directory for the handset");
  bool good = true;
  try {
    const auto agent = loader::AgentLibrary::Open(file);
    handset::Start(root);
    std::filesystem::create_directories(handset::HostPath(u"\\dbdata\\sysconfig"));
    std::filesystem::create_directories(handset::HostPath(bench::kDirectory));
    bench::Growth schedule;
    good = bench::MeasureSchedule(*agent, schedule) && good;
    good = bench::MeasureChangeComputation() && good;
    good = bench::MeasureMessages(*agent) && good;
    good = bench::MeasureMail(*agent) && good;
    good = bench::MeasureCardsAndMemos(*agent) && good;
    good = bench::MeasureRecordsWithItems(*agent) && good;
    good = bench::MeasureContacts(*agent, schedule) && good;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "qv_bench: %s\n", error.what());
    good = false;
  }
  std::filesystem::remove_all(root);
  return good ? 0 : 1;
}
