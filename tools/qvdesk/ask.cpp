// "ask": the small questions that a desktop has for a handset.
#include <fmt/format.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/handset/handset.h"
#include "tools/qvdesk/commands.h"
#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/phone.h"
#include "tools/qvdesk/text.h"

namespace qvdesk {
namespace {

struct Options {
  PhoneOptions phone;
  std::vector<std::string> programs;
  std::vector<std::string> windows;
  std::uint32_t number = 0;
  std::string path;
};

Phone OpenPhone(const Options& options) {
  Phone phone(options.phone);
  for (const std::string& program : options.programs) handset::HoldSemaphore(ToUtf16(program));
  for (const std::string& window : options.windows) handset::OpenWindow(ToUtf16(window));
  return phone;
}

std::vector<std::uint8_t> InputOf(std::uint32_t number) {
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(&number);
  return {bytes, bytes + sizeof(number)};
}

std::vector<std::uint8_t> InputOf(const std::string& text) {
  const std::u16string wide = ToUtf16(text);
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(wide.c_str());
  return {bytes, bytes + sizeof(char16_t) * (wide.size() + 1)};
}

int AskModel(const Options& options) {
  const bool expected = OpenPhone(options).Call("fnQV_IsNimbraK9").Word(0) != 0;
  fmt::print("{}\n", expected ? "yes: the handset is of the expected model" : "no: the handset is of another model");
  return kSuccess;
}

int AskSyncRunning(const Options& options) {
  const bool running = OpenPhone(options).Call("fnQV_IsRunSDSync").Word(0) != 0;
  fmt::print("{}\n", running ? "yes: a synchronisation runs" : "no: no synchronisation runs");
  return kSuccess;
}

int AskRunning(const Options& options) {
  const bool running = OpenPhone(options).Call("fnQV_CheckMutex", InputOf(options.number)).Word(0) != 0;
  fmt::print("{}: program {} {}\n", running ? "yes" : "no", options.number, running ? "runs" : "does not run");
  return kSuccess;
}

int AskFreeSpace(const Options& options) {
  constexpr std::uint32_t kNoSuchPath = 0xFFFFFFFF;
  const std::uint32_t free = OpenPhone(options).Call("fnQV_GetPDASpace", InputOf(options.path)).Word(0);
  if (free == kNoSuchPath) throw std::runtime_error(fmt::format("the handset has no path \"{}\"", options.path));
  fmt::print("{} bytes are free, modulo 4 GB: the answer has 32 bits\n", free);
  return kSuccess;
}

int AskStoreSpace(const Options& options) {
  const bool changed = OpenPhone(options).Call("fnQV_SetPDAStoreSpace", InputOf(options.number)).Word(0) != 0;
  fmt::print("{}\n", changed ? "yes: the division of memory changed at once"
                             : "no: the division of memory did not change at once");
  return kSuccess;
}

int AskMailId(const Options& options) {
  const Answer answer = OpenPhone(options).Call("fnQV_GetMailID");
  if (answer.Word(0) != 0) {
    fmt::print("the system mail account has the id {}\n", answer.Word(1));
  } else {
    fmt::print("the handset has no system mail account\n");
  }
  return kSuccess;
}

int NotifyCallFilter(const Options& options) {
  const Phone phone = OpenPhone(options);
  phone.Agent().Export<decltype(fnQV_NotifyBLTChanged)>("fnQV_NotifyBLTChanged")();
  if (handset::PostedMessages().empty()) {
    fmt::print("nobody was told: the telephony server has no window on this handset\n");
  }
  for (const handset::PostedMessage& posted : handset::PostedMessages()) {
    fmt::print("the telephony server was told: message 0x{:x}, {}\n", posted.message, posted.wparam);
  }
  return kSuccess;
}

using Question = int(const Options& options);

CLI::App* AddQuestion(CLI::App& ask, const std::shared_ptr<Options>& options, int& status, const char* name,
                      const char* purpose, Question* question) {
  CLI::App* const command = ask.add_subcommand(name, purpose);
  AddPhoneOptions(*command, options->phone);
  command->add_option("--with-program", options->programs, "Pretend that a program holding this semaphore runs")
      ->type_name("NAME");
  command->add_option("--with-window", options->windows, "Pretend that a window with this title is open")
      ->type_name("TITLE");
  command->callback([options, &status, question] { status = question(*options); });
  return command;
}

}  // namespace

void AddAsk(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "ask",
      "Asks the handset one of the questions that desktops ask before and after a synchronisation, and prints the "
      "answer. A simulated handset runs no programs and has no windows; --with-program and --with-window pretend.");
  command->require_subcommand(1);
  command->footer(
      "Examples:\n  qvdesk ask model --handset /tmp/phone\n"
      "  qvdesk ask free-space '\\sync' --handset /tmp/phone\n"
      "  qvdesk ask running 32 --handset /tmp/phone --with-program App_SyncK9");
  const auto options = std::make_shared<Options>();
  AddQuestion(*command, options, status, "model", "Is it the expected handset model?", AskModel);
  AddQuestion(*command, options, status, "sync-running", "Does a synchronisation run?", AskSyncRunning);
  AddQuestion(*command, options, status, "running", "Does a program run?", AskRunning)
      ->add_option("SELECTOR", options->number,
                   "1: abc.exe; 6: the mail program's main window; 32: a synchronisation; any other: a program without "
                   "a name")
      ->required();
  AddQuestion(*command, options, status, "free-space", "How many bytes are free?", AskFreeSpace)
      ->add_option("PATH", options->path,
                   "A path on the handset, like '\\sync'; not '\\' itself, which the handset does not find")
      ->required();
  AddQuestion(*command, options, status, "store-space", "Moves the division between storage and program memory",
              AskStoreSpace)
      ->add_option("VALUE", options->number, "The storage's share; the system is given 256 times the value")
      ->required();
  AddQuestion(*command, options, status, "mail-id", "Which is the system mail account?", AskMailId);
  AddQuestion(*command, options, status, "notify-call-filter",
              "Tells the telephony server, the window \"PhoneServerWindow\", that the call-filter list changed",
              NotifyCallFilter);
}

}  // namespace qvdesk
