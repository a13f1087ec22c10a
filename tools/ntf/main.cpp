// ntf: inspects, draws, creates, changes and checks NITF files. This is the command line.
#include "check.h"
#include "copy.h"
#include "create.h"
#include "export.h"
#include "extract.h"
#include "help_format.h"
#include "info.h"
#include "ksntfx.h"
#include "option_values.h"
#include "picture.h"
#include "problem.h"
#include "render.h"
#include "set.h"
#include "text.h"
#include "wide_render.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

namespace {

static_assert(std::string_view(KSNTFX_VERSION) == NTF_VERSION, "the header has the version of the build");

enum ExitCode { kDone = 0, kFileFault = 1, kWrongUsage = 2 };

/** The options of all commands. */
struct Request {
  ntf::InfoOptions info;
  ntf::RenderOptions render;
  ntf::TextOptions text;
  ntf::ExtractOptions extract;
  ntf::ExportOptions exported;
  ntf::CopyOptions copy;
  ntf::CheckOptions check;
  ntf::CreateOptions create;
  ntf::CreateOptions append;
  ntf::SetOptions set;
};

// What the library shows in a message box, it also returns as a status, and one line is enough.
std::int32_t SilentMessageBox(const char *, const char *, std::uint32_t, void *) {
  return 1;
}

void SilenceLibrary() {
  KsPlatformHandlers handlers = {};
  handlers.messageBox = SilentMessageBox;
  KsSetPlatformHandlers(&handlers);
}

/** Adds a command with what all of them have. */
CLI::App *AddCommand(CLI::App &app, const std::string &name, const std::string &description,
                     const std::vector<std::string> &examples) {
  CLI::App *command = app.add_subcommand(name, description);
  command->set_help_flag("-h,--help", "Print this help and exit");
  command->set_version_flag("-v,--version", "ntf " NTF_VERSION, "Print the version and exit");
  command->group("Commands");
  std::string footer = "Examples:";
  for (const std::string &example : examples) footer += "\n    ntf " + example;
  command->footer(footer);
  return command;
}

void DefineForce(CLI::App &command, bool &force) {
  command.add_flag("--force", force, "Overwrite existing files")->disable_flag_override();
}

void DefineStrict(CLI::App &command, ntf::Door &door) {
  const auto set = [&door](std::int64_t count) { door = count > 0 ? ntf::Door::Strict : ntf::Door::Wide; };
  command.add_flag_function("--strict", set, "Accept only what the library's filter accepts: NITF 02.10, level 03")
      ->disable_flag_override();
}

void DefineInfo(CLI::App &app, ntf::InfoOptions &options) {
  CLI::App *info = AddCommand(app, "info", "Summarise files", {"info scene.ntf", "info --json *.ntf"});
  info->add_option("FILE", options.files, "NITF files")->required()->type_name("");
  info->add_flag("--json", options.json, "Print all header fields as JSON: an object, or an array for several files")
      ->disable_flag_override();
  DefineStrict(*info, options.door);
}

void DefineLoadFlag(CLI::App &render, ntf::RenderOptions &options, CLI::Option *image, const std::string &name,
                    std::uint32_t flag, const std::string &description) {
  const auto set = [&options, flag](std::int64_t) {
    options.loadFlags |= flag;
    options.door = ntf::Door::Strict;
  };
  render.add_flag_function(name, set, description)->excludes(image)->disable_flag_override();
}

void DefineRender(CLI::App &app, ntf::RenderOptions &options) {
  CLI::App *render = AddCommand(app, "render", "Draw a file",
                                {"render scene.ntf -o scene.png", "render scene.ntf --image 0 -o image.png"});
  render->add_option("FILE", options.file, "NITF file")->required()->type_name("");
  render->add_option("-o,--output", options.output, "Picture to write, .png or .ppm; - for PNG on standard output")
      ->required()
      ->type_name("OUT")
      ->check(ntf::PictureName());
  DefineForce(*render, options.force);
  CLI::Option *image = render->add_option("--image", options.image, "Draw only this image, counted from 0")
                           ->type_name("N")
                           ->check(ntf::SegmentNumber());
  CLI::Option *graphic =
      render->add_option("--graphic", options.graphic, "Draw only this graphic, counted from 0, on white")
          ->type_name("N")
          ->check(ntf::SegmentNumber());
  graphic->excludes(image);
  const auto stretch = [&options](const std::string &value) {
    if (ntf::ParseStretch(value, options.show)) return;
    throw CLI::ValidationError("--stretch", "'" + value + "' is not none, minmax or percent:LOW,HIGH");
  };
  render
      ->add_option_function<std::string>("--stretch", stretch,
                                         "Spread samples over the 8 bits of a screen: percent:LOW,HIGH, minmax or "
                                         "none; by default percent:2,98 for samples of more than 8 bits")
      ->type_name("HOW")
      ->excludes(graphic);
  const auto bands = [&options](const std::string &value) {
    if (!ntf::ParseBands(value, options.show)) {
      throw CLI::ValidationError("--bands", "'" + value + "' is not three numbers of bands, R,G,B");
    }
  };
  render->add_option_function<std::string>("--bands", bands, "Bands to show as red, green and blue, counted from 0")
      ->type_name("R,G,B")
      ->excludes(graphic);
  render->add_flag("--keep-going", options.keepsGoing, "Leave out what can't be drawn, and list it")
      ->disable_flag_override();
  DefineStrict(*render, options.door);
  const auto asStrict = [&options](std::int64_t) { options.door = ntf::Door::Strict; };
  render
      ->add_flag_function(
          "--padded",
          [&options, asStrict](std::int64_t count) {
            options.padded = true;
            asStrict(count);
          },
          "With --image: include the pad pixels of the last blocks; implies --strict")
      ->needs(image)
      ->disable_flag_override();
  render->add_option("--depth", options.depth, "Bits per pixel of the canvas: 8 (gray) or 24; implies --strict")
      ->each([asStrict](const std::string &) { asStrict(1); })
      ->type_name("BITS")
      ->check(ntf::OneOf({"8", "24"}))
      ->capture_default_str()
      ->excludes(image)
      ->excludes(graphic);
  CLI::Option *compress =
      render->add_option("--compress", options.compression, "PNG compression level: 0 none, 1 fastest, 9 smallest")
          ->type_name("LEVEL")
          ->check(ntf::Between(ntf::kStored, ntf::kSmallest))
          ->capture_default_str();
  render->callback([compress, &options] {
    const bool isNeedless = compress->count() != 0 && !ntf::IsCompressedPicture(options.output);
    if (isNeedless) throw CLI::ValidationError("--compress", "only PNG is compressed");
  });
  DefineLoadFlag(*render, options, image, "--fixed-canvas", NITF_LOAD_FIXED_CANVAS,
                 "Use a canvas of 2048 x 2048 pixels; implies --strict");
  DefineLoadFlag(*render, options, image, "--tone-check", NITF_LOAD_TONE_CHECK,
                 "Stretch very dark images to the full range; implies --strict");
  DefineLoadFlag(*render, options, image, "--vector-render", NITF_LOAD_VECTOR_RENDER,
                 "Paint object symbols immediately; implies --strict");
}

void DefineText(CLI::App &app, ntf::TextOptions &options) {
  CLI::App *text =
      AddCommand(app, "text", "Print the texts of a file", {"text scene.ntf", "text scene.ntf 0 > notes.txt"});
  text->add_option("FILE", options.file, "NITF file")->required()->type_name("");
  text->add_option("N", options.text, "Print only this text, counted from 0, without a heading")
      ->type_name("")
      ->check(ntf::SegmentNumber());
  DefineStrict(*text, options.door);
}

void DefineExtract(CLI::App &app, ntf::ExtractOptions &options) {
  CLI::App *extract = AddCommand(app, "extract", "Write the data of segments to files",
                                 {"extract scene.ntf -o parts", "extract scene.ntf -o parts --image 0 --text 0"});
  extract->add_option("FILE", options.file, "NITF file")->required()->type_name("");
  extract->add_option("-o,--output", options.folder, "Folder to write to; created if it doesn't exist")
      ->required()
      ->type_name("DIR");
  DefineForce(*extract, options.force);
  const auto choose = [&](const std::string &name, std::vector<std::uint32_t> &numbers, const std::string &what) {
    extract->add_option(name, numbers, "Write only this " + what + ", counted from 0; can be repeated")
        ->allow_extra_args(false)
        ->check(ntf::SegmentNumber())
        ->type_name("N");
  };
  choose("--image", options.images, "image");
  choose("--graphic", options.graphics, "graphic");
  choose("--text", options.texts, "text");
  choose("--data-extension", options.dataExtensions, "data extension");
  DefineStrict(*extract, options.door);
}

void DefineExport(CLI::App &app, ntf::ExportOptions &options) {
  CLI::App *command = AddCommand(
      app, "export", "Write the samples of an image as TIFF",
      {"export scene.ntf -o scene.tif", "export scene.ntf -o part.tif --image 1 --bands 3,2,1 --compress deflate"});
  command->add_option("FILE", options.file, "NITF file")->required()->type_name("");
  command->add_option("-o,--output", options.output, "File to write, .tif or .tiff")
      ->required()
      ->type_name("OUT")
      ->check(ntf::TiffName());
  DefineForce(*command, options.force);
  command->add_option("--image", options.image, "This image, counted from 0")
      ->type_name("N")
      ->check(ntf::SegmentNumber())
      ->capture_default_str();
  const auto choose = [&options](const std::string &list) {
    const std::vector<int> numbers = *ntf::NumbersOf(list);
    options.bands.assign(numbers.begin(), numbers.end());
  };
  command->add_option_function<std::string>("--bands", choose, "Only these bands, counted from 0, in this order")
      ->type_name("N,...")
      ->check(ntf::BandList());
  command->add_option("--compress", options.compression, "Compression: none or deflate")
      ->type_name("METHOD")
      ->check(ntf::OneOf({"none", "deflate"}))
      ->capture_default_str();
}

void DefineCopy(CLI::App &app, ntf::CopyOptions &options) {
  CLI::App *copy =
      AddCommand(app, "copy", "Copy a file byte for byte, and compare the copy with it", {"copy scene.ntf other.ntf"});
  copy->add_option("IN", options.input, "NITF file")->required()->type_name("");
  copy->add_option("OUT", options.output, "File to write")->required()->type_name("");
  DefineForce(*copy, options.force);
  DefineStrict(*copy, options.door);
}

void DefineCheck(CLI::App &app, ntf::CheckOptions &options) {
  CLI::App *check =
      AddCommand(app, "check", "Report inconsistencies, one per line", {"check scene.ntf", "check --json *.ntf"});
  check->add_option("FILE", options.files, "NITF files")->required()->type_name("");
  check->add_flag("--json", options.json, "Print JSON: an object, or an array for several files")
      ->disable_flag_override();
  DefineStrict(*check, options.door);
}

// ---- segments to append -------------------------------------------------------------------------------------------

/** An option of the segment that precedes it. */
void RefineItem(ntf::Item *item, const std::string &name, const std::string &value) {
  const bool isText = item == nullptr || item->kind == ntf::ItemKind::Text;
  const bool isImage = !isText && item->kind == ntf::ItemKind::Image;
  if (name == "--quality" ? !isImage : name == "--box" ? isText || isImage : isText) {
    const char *const owner = name == "--quality" ? "--image" : name == "--box" ? "--graphic" : "--image or --graphic";
    throw CLI::ValidationError(name, std::string("must follow the ") + owner + " that it belongs to");
  }
  if (name == "--quality") item->quality = std::stoi(value);
  if (name == "--at") item->location = value;
  if (name == "--level") item->level = value;
  if (name == "--attach") item->attachment = value;
  if (name != "--box") return;
  const std::vector<int> box = *ntf::NumbersOf(value, 4);
  item->box = KsRect{box[0], box[1], box[2], box[3]};
}

/** Collects the segments in the order of the command line. */
void CollectItems(const CLI::App &command, std::vector<ntf::Item> &items) {
  std::map<const CLI::Option *, std::size_t> used;
  for (const CLI::Option *option : command.parse_order()) {
    const std::string name = option->get_name();
    const std::string value = option->results().at(used[option]++);
    if (name == "--image") {
      items.push_back(ntf::Item{.kind = ntf::ItemKind::Image, .file = value});
    } else if (name == "--graphic") {
      items.push_back(ntf::Item{.kind = ntf::ItemKind::Graphic, .file = value});
    } else if (name == "--text") {
      items.push_back(ntf::Item{.kind = ntf::ItemKind::Text, .file = value});
    } else if (option->get_group() == "Segments") {
      RefineItem(items.empty() ? nullptr : &items.back(), name, value);
    }
  }
}

CLI::Option *DefineField(CLI::App &command, ntf::CreateOptions &options, const std::string &name,
                         const std::string &field, const std::string &description) {
  const auto add = [&options, field](const std::string &value) { options.fields.push_back({field, value}); };
  return command.add_option_function<std::string>(name, add, description);
}

void DefineItems(CLI::App &command, ntf::CreateOptions &options) {
  command.add_option("-o,--output", options.output, "File to write")->required()->type_name("OUT");
  DefineForce(command, options.force);
  DefineField(command, options, "--title", "FTITLE", "Title of the file")
      ->type_name("TEXT")
      ->check(ntf::HeaderText(80));
  DefineField(command, options, "--security", "FSCLAS", "Classification: U, R, C, S or T")
      ->type_name("LETTER")
      ->check(ntf::OneOf({"U", "R", "C", "S", "T"}));
  DefineField(command, options, "--origin", "OSTAID", "Identifier of the originating station")
      ->type_name("ID")
      ->check(ntf::HeaderText(10));
  DefineField(command, options, "--background", "FBKGC", "Background colour, in hexadecimal digits")
      ->type_name("RRGGBB")
      ->check(ntf::Color());
  const auto segment = [&](const std::string &name, const char *value, const std::string &description) {
    return command.add_option(name, description)->expected(1)->take_all()->group("Segments")->type_name(value);
  };
  segment("--image", "FILE", "Append a picture (PNG, PPM or JPEG), stored as JPEG");
  segment("--quality", "N", "Quality of the preceding picture, 1 (smallest) to 100 (best)")
      ->check(ntf::Between(ntf::kWorstQuality, ntf::kBestQuality))
      ->default_str(std::to_string(ntf::kDefaultQuality));
  segment("--graphic", "FILE", "Append a drawing (CGM)");
  segment("--box", "L,T,R,B", "Box that the preceding drawing fills: left,top,right,bottom, so columns come first")
      ->check(ntf::Box());
  segment("--at", "ROW,COL", "Location of the preceding picture or drawing: row,column, so the row comes first")
      ->check(ntf::Location());
  segment("--level", "N", "Display level of the preceding picture or drawing, 1 to 999")->check(ntf::Between(1, 999));
  segment("--attach", "N", "Display level that the preceding picture or drawing is attached to")
      ->check(ntf::Between(0, 998));
  segment("--text", "FILE", "Append a text");
}

void DefineCreate(CLI::App &app, ntf::CreateOptions &options) {
  CLI::App *create = AddCommand(app, "create", "Create a file from pictures, drawings and texts, in the given order",
                                {"create -o scene.ntf --image map.png --graphic roads.cgm --text notes.txt",
                                 "create -o scene.ntf --image map.png --image inset.jpg --at 20,30 --attach 1"});
  DefineItems(*create, options);
  create->callback([create, &options] { CollectItems(*create, options.items); });
}

void DefineAppend(CLI::App &app, ntf::CreateOptions &options) {
  CLI::App *append = AddCommand(app, "append", "Append pictures, drawings and texts to a file",
                                {"append scene.ntf -o noted.ntf --text notes.txt"});
  append->add_option("IN", options.input, "NITF file")->required()->type_name("");
  DefineItems(*append, options);
  append->callback([append, &options] { CollectItems(*append, options.items); });
}

void DefineSet(CLI::App &app, ntf::SetOptions &options) {
  CLI::App *set =
      AddCommand(app, "set", "Change header fields",
                 {"set scene.ntf -o titled.ntf FTITLE='A scene'", "set scene.ntf -o moved.ntf --image 1 ILOC=20,30"});
  set->add_option("IN", options.input, "NITF file")->required()->type_name("");
  set->add_option("FIELD=VALUE", options.fields, "Fields, by their names in the standard")->required()->type_name("");
  set->add_option("-o,--output", options.output, "File to write")->required()->type_name("OUT");
  DefineForce(*set, options.force);
  CLI::Option *image = set->add_option("--image", options.image, "Change the subheader of this image, counted from 0")
                           ->type_name("N")
                           ->check(ntf::SegmentNumber());
  CLI::Option *graphic = set->add_option("--graphic", options.graphic, "Change the subheader of this graphic")
                             ->excludes(image)
                             ->type_name("N")
                             ->check(ntf::SegmentNumber());
  set->add_option("--text", options.text, "Change the subheader of this text")
      ->excludes(image)
      ->excludes(graphic)
      ->type_name("N")
      ->check(ntf::SegmentNumber());
}

// ---- running ------------------------------------------------------------------------------------------------------

ntf::Outcome RunFileCommand(const CLI::App &app, const Request &request) {
  if (app.got_subcommand("text")) return ntf::PrintTexts(request.text);
  if (app.got_subcommand("extract")) return ntf::Extract(request.extract);
  if (app.got_subcommand("export")) return ntf::Export(request.exported);
  if (app.got_subcommand("copy")) return ntf::Copy(request.copy);
  if (app.got_subcommand("create")) return ntf::Create(request.create);
  if (app.got_subcommand("append")) return ntf::Create(request.append);
  if (app.got_subcommand("set")) return ntf::Set(request.set);
  return ntf::Render(request.render);
}

int Run(const CLI::App &app, const Request &request) {
  SilenceLibrary();
  if (app.got_subcommand("info")) return ntf::Info(request.info) ? kDone : kFileFault;
  if (app.got_subcommand("check")) return ntf::Check(request.check) ? kDone : kFileFault;
  const ntf::Outcome failed = RunFileCommand(app, request);
  if (!failed) return kDone;
  ntf::Report(*failed);
  return failed->isUsage ? kWrongUsage : kFileFault;
}

int RunCommandLine(int argc, char **argv) {
  Request request;
  CLI::App app("Inspect, draw, create, change and check NITF 2.1 files.", "ntf");
  app.set_help_flag("-h,--help", "Print this help and exit");
  app.set_version_flag("-v,--version", "ntf " NTF_VERSION, "Print the version and exit");
  app.footer("'ntf COMMAND --help' documents a command, and 'man ntf' all of them.");
  app.require_subcommand(1);
  app.failure_message(ntf::UsageError);
  app.formatter(std::make_shared<ntf::HelpFormat>());
  DefineInfo(app, request.info);
  DefineRender(app, request.render);
  DefineText(app, request.text);
  DefineExtract(app, request.extract);
  DefineExport(app, request.exported);
  DefineCopy(app, request.copy);
  DefineCheck(app, request.check);
  DefineCreate(app, request.create);
  DefineAppend(app, request.append);
  DefineSet(app, request.set);
  app.set_help_all_flag("--help-all", "Print the options of all commands and exit");
  std::vector<std::string> arguments(argv + 1, argv + argc);
  // "ntf help COMMAND" is "ntf COMMAND --help".
  if (!arguments.empty() && arguments[0] == "help") {
    arguments.erase(arguments.begin());
    arguments.emplace_back("--help");
  }
  if (const auto words = ntf::UnknownCommand(app, arguments)) {
    std::fprintf(stderr, "ntf: %s\n", words->c_str());
    return kWrongUsage;
  }
  try {
    std::reverse(arguments.begin(), arguments.end());  // as the parser wants them
    app.parse(arguments);
  } catch (const CLI::ParseError &error) {
    return app.exit(error) == 0 ? kDone : kWrongUsage;
  }
  return Run(app, request);
}

}  // namespace

int main(int argc, char **argv) {
  try {
    return RunCommandLine(argc, argv);
  } catch (const std::exception &error) {
    std::fprintf(stderr, "ntf: %s\n", error.what());
    return kFileFault;
  }
}
