// "picture": the contacts' pictures out of an image table, as files that a viewer opens.
#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tools/qvdesk/commands.h"
#include "tools/qvdesk/errors.h"
#include "tools/qvdesk/host_file.h"
#include "tools/qvdesk/picture_table.h"
#include "tools/qvdesk/text.h"
#include "tools/qvdesk/text_table.h"

namespace qvdesk {
namespace {

struct Options {
  std::filesystem::path table;
  std::optional<std::uint32_t> id;
  std::filesystem::path output;
};

/// What the files of each kind begin with.
struct Signature {
  const char* type;
  std::string_view beginning;
};
constexpr Signature kSignatures[] = {
    {"JPEG", "\xff\xd8\xff"}, {"PNG", "\x89PNG\r\n\x1a\n"}, {"GIF", "GIF8"}, {"BMP", "BM"}};

const char* TypeOf(const Picture& picture) {
  const std::string_view bytes(reinterpret_cast<const char*>(picture.bytes.data()), picture.bytes.size());
  for (const Signature& signature : kSignatures) {
    if (bytes.starts_with(signature.beginning)) return signature.type;
  }
  return "unknown";
}

[[noreturn]] void ComplainOfDamage(const Options& options, const std::string& damage) {
  std::fflush(stdout);
  throw std::runtime_error(
      fmt::format("{}: {}. The file was cut off or damaged, or it is no image table.", options.table.string(), damage));
}

int ListPictures(const Options& options) {
  const PictureTable table = ReadPictureTable(options.table);
  TextTable text{.header = {"picture_id", "bytes", "type"}, .rows = {}};
  for (const Picture& picture : table.pictures) {
    text.rows.push_back({std::to_string(picture.id), std::to_string(picture.claimed), TypeOf(picture)});
  }
  if (!text.rows.empty()) fmt::print("{}", text.Render(TerminalWidth()));
  fmt::print("{}\n", CountOf(table.pictures.size(), "picture"));
  if (table.damage) ComplainOfDamage(options, *table.damage);
  return kSuccess;
}

int ExtractPicture(const Options& options) {
  const PictureTable table = ReadPictureTable(options.table);
  const auto picture = std::ranges::find(table.pictures, *options.id, &Picture::id);
  if (picture == table.pictures.end()) {
    if (table.damage) ComplainOfDamage(options, *table.damage);
    throw std::runtime_error(
        fmt::format("{}: it holds no picture of the id {}. \"qvdesk picture {}\" lists those that it holds.",
                    options.table.string(), *options.id, options.table.string()));
  }
  WriteWholeFile(options.output, picture->bytes);
  fmt::print("{}: {}, {}\n", options.output.string(), CountOf(picture->bytes.size(), "byte"), TypeOf(*picture));
  if (picture->claimed == picture->bytes.size()) return kSuccess;
  std::fflush(stdout);
  fmt::print(stderr,
             "qvdesk: note: the record claims {} bytes, more than its room of {}; the picture was cut to the room\n",
             picture->claimed, picture->bytes.size());
  return kSuccess;
}

}  // namespace

void AddPicture(CLI::App& program, int& status) {
  CLI::App* const command = program.add_subcommand(
      "picture",
      "Takes a contact's picture out of an image table, as the picture file that it is. With the table alone it lists "
      "the pictures: id, bytes, and the type that their first bytes tell. A contact names its picture in the field "
      "picture_id.");
  auto options = std::make_shared<Options>();
  command->add_option("IMAGE_TBL", options->table, "The table, image.tbl of a contacts export")->required();
  CLI::Option* const id = command->add_option("ID", options->id, "The picture's id");
  id->needs(command->add_option("OUT", options->output, "The file to write"));
  command->footer(
      "Examples:\n  qvdesk picture /tmp/phone/sync/image.tbl\n"
      "  qvdesk picture /tmp/phone/sync/image.tbl 3 /tmp/anna.bmp");
  command->callback([options, &status] { status = options->id ? ExtractPicture(*options) : ListPictures(*options); });
}

}  // namespace qvdesk
