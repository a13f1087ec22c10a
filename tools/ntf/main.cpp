// ntf: looks at NITF files, draws them, builds them, takes them apart, changes and checks them.
#include "check.h"
#include "copy.h"
#include "create.h"
#include "extract.h"
#include "info.h"
#include "ksntfx.h"
#include "picture.h"
#include "problem.h"
#include "render.h"
#include "set.h"
#include "text.h"

#include <cstdio>
#include <exception>
#include <map>
#include <string>
#include <string_view>

#include <CLI/CLI.hpp>

namespace {

static_assert(std::string_view(KSNTFX_VERSION) == NTF_VERSION, "the header tells the version of the build");

enum ExitCode { kDone = 0, kFileFault = 1, kWrongUsage = 2 };

/** What the command line asks for. */
struct Request {
  ntf::InfoOptions info;
  ntf::RenderOptions render;
  ntf::TextOptions text;
  ntf::ExtractOptions extract;
  ntf::CopyOptions copy;
  ntf::CheckOptions check;
  ntf::CreateOptions create;
  ntf::CreateOptions append;
  ntf::SetOptions set;
};

// The refusals that the library shows in a message box come back as a status too, and one line is enough.
std::int32_t SilentMessageBox(const char *, const char *, std::uint32_t, void *) {
  return 1;
}

void SilenceLibrary() {
  KsPlatformHandlers handlers = {};
  handlers.messageBox = SilentMessageBox;
  KsSetPlatformHandlers(&handlers);
}

void DefineInfo(CLI::App &app, ntf::InfoOptions &options) {
  CLI::App *info = app.add_subcommand("info", "Tell what is in files");
  info->set_version_flag("--version", "ntf " NTF_VERSION);
  info->add_option("FILE", options.files, "NITF files")->required();
  info->add_flag("--json", options.json, "All header fields as JSON: an object, or an array of them for several files");
}

void DefineLoadFlag(CLI::App &render, ntf::RenderOptions &options, CLI::Option *image, const std::string &name,
                    std::uint32_t flag, const std::string &description) {
  const auto set = [&options, flag](std::int64_t) { options.loadFlags |= flag; };
  render.add_flag_function(name, set, description)->excludes(image);
}

void DefineRender(CLI::App &app, ntf::RenderOptions &options) {
  const auto checkOutput = [](const std::string &name) {
    return ntf::IsPictureName(name) ? std::string() : name + ": the name must end in .png or .ppm, or be -";
  };
  CLI::App *render = app.add_subcommand("render", "Draw the picture of a file");
  render->set_version_flag("--version", "ntf " NTF_VERSION);
  render->add_option("FILE", options.file, "NITF file")->required();
  render->add_option("-o,--output", options.output, "Picture to write, .png or .ppm; - is PNG on the standard output")
      ->required()
      ->check(CLI::Validator(checkOutput, "OUT"));
  CLI::Option *image =
      render->add_option("--image", options.image, "Only this image segment, counted from 0, at its own depth");
  CLI::Option *graphic =
      render->add_option("--graphic", options.graphic, "Only this graphic segment, counted from 0, on white");
  graphic->excludes(image);
  render->add_flag("--padded", options.padded, "With --image: also the fill of the last blocks")->needs(image);
  render->add_option("--depth", options.depth, "Bits per pixel of the canvas, 8 (gray) or 24")
      ->check(CLI::IsMember({8, 24}))
      ->capture_default_str()
      ->excludes(image)
      ->excludes(graphic);
  CLI::Option *compress =
      render->add_option("--compress", options.compression, "How small a PNG becomes: 0 is stored, 1 fast, 9 small")
          ->check(CLI::Range(ntf::kStored, ntf::kSmallest))
          ->capture_default_str();
  render->callback([compress, &options] {
    const bool isNeedless = compress->count() != 0 && !ntf::IsCompressedPicture(options.output);
    if (isNeedless) throw CLI::ValidationError("--compress", "only PNG is compressed");
  });
  DefineLoadFlag(*render, options, image, "--fixed-canvas", NITF_LOAD_FIXED_CANVAS, "A canvas of 2048 by 2048 pixels");
  DefineLoadFlag(*render, options, image, "--tone-check", NITF_LOAD_TONE_CHECK,
                 "Spread very dark images over the full range");
  DefineLoadFlag(*render, options, image, "--vector-render", NITF_LOAD_VECTOR_RENDER, "Paint object symbols at once");
}

void DefineText(CLI::App &app, ntf::TextOptions &options) {
  CLI::App *text = app.add_subcommand("text", "Print the texts of a file");
  text->set_version_flag("--version", "ntf " NTF_VERSION);
  text->add_option("FILE", options.file, "NITF file")->required();
  text->add_option("N", options.text, "Only this text segment, counted from 0, and without a heading");
}

void DefineExtract(CLI::App &app, ntf::ExtractOptions &options) {
  CLI::App *extract = app.add_subcommand("extract", "Write the data of segments as files, all or those chosen");
  extract->set_version_flag("--version", "ntf " NTF_VERSION);
  extract->add_option("FILE", options.file, "NITF file")->required();
  extract->add_option("-o,--output", options.folder, "Folder to write to, made where it isn't there")->required();
  extract->add_flag("--force", options.force, "Overwrite files that are there");
  const auto choose = [&](const std::string &name, std::vector<std::uint32_t> &numbers, const std::string &what) {
    extract->add_option(name, numbers, what + " of this number, counted from 0; may be repeated")
        ->allow_extra_args(false);
  };
  choose("--image", options.images, "Image");
  choose("--graphic", options.graphics, "Graphic");
  choose("--text", options.texts, "Text");
  choose("--data-extension", options.dataExtensions, "Data extension");
}

void DefineCopy(CLI::App &app, ntf::CopyOptions &options) {
  CLI::App *copy = app.add_subcommand("copy", "Open a file, save it under another name, and compare the two");
  copy->set_version_flag("--version", "ntf " NTF_VERSION);
  copy->add_option("IN", options.input, "NITF file")->required();
  copy->add_option("OUT", options.output, "File to write")->required();
  copy->add_flag("--force", options.force, "Overwrite a file that is there");
}

void DefineCheck(CLI::App &app, ntf::CheckOptions &options) {
  CLI::App *check = app.add_subcommand("check", "Tell what does not agree in files, a line a finding");
  check->set_version_flag("--version", "ntf " NTF_VERSION);
  check->add_option("FILE", options.files, "NITF files")->required();
  check->add_flag("--json", options.json, "An object, or an array of them for several files");
}

/** What belongs to the segment that was named last. */
void RefineItem(ntf::Item *item, const std::string &name, const std::string &value) {
  const bool isText = item == nullptr || item->kind == ntf::ItemKind::Text;
  const bool isImage = !isText && item->kind == ntf::ItemKind::Image;
  if (isText || (name == "--quality" && !isImage) || (name == "--box" && isImage)) {
    throw CLI::ValidationError(name, "belongs behind an option that it refines");
  }
  if (name == "--quality") item->quality = static_cast<std::uint32_t>(std::stoul(value));
  if (name == "--at") item->location = value;
  if (name == "--level") item->level = value;
  if (name == "--attach") item->attachment = value;
  if (name != "--box") return;
  KsRect box = {};
  int end = 0;
  const int taken = std::sscanf(value.c_str(), "%d,%d,%d,%d%n", &box.left, &box.top, &box.right, &box.bottom, &end);
  if (taken != 4 || static_cast<std::size_t>(end) != value.size()) {
    throw CLI::ValidationError(name, "is LEFT,TOP,RIGHT,BOTTOM");
  }
  item->box = box;
}

/** Takes the segments in the order of the command line. */
void TakeItems(const CLI::App &command, std::vector<ntf::Item> &items) {
  std::map<const CLI::Option *, std::size_t> taken;
  for (const CLI::Option *option : command.parse_order()) {
    const std::string name = option->get_name();
    const std::string value = option->results().at(taken[option]++);
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

void DefineField(CLI::App &command, ntf::CreateOptions &options, const std::string &name, const std::string &field,
                 const std::string &description) {
  const auto add = [&options, field](const std::string &value) { options.fields.emplace_back(field, value); };
  command.add_option_function<std::string>(name, add, description);
}

void DefineItems(CLI::App &command, ntf::CreateOptions &options) {
  command.set_version_flag("--version", "ntf " NTF_VERSION);
  command.add_option("-o,--output", options.output, "File to write")->required();
  command.add_flag("--force", options.force, "Overwrite a file that is there");
  DefineField(command, options, "--title", "FTITLE", "Title of the file");
  DefineField(command, options, "--security", "FSCLAS", "Classification: U, R, C, S or T");
  DefineField(command, options, "--origin", "OSTAID", "Identifier of the station that the file comes from");
  DefineField(command, options, "--background", "FBKGC", "Colour behind everything, RRGGBB");
  const auto segment = [&](const std::string &name, const std::string &description, const CLI::Validator &check) {
    command.add_option(name, description)->expected(1)->take_all()->group("Segments")->check(check);
  };
  const CLI::Validator any;
  segment("--image", "Append a picture, PNG, PPM or JPEG, as JPEG", any);
  segment("--quality", "Of the picture: 2, the best, to 255, the smallest", CLI::Range(2, 255));
  segment("--graphic", "Append a drawing, a CGM file", any);
  segment("--box", "LEFT,TOP,RIGHT,BOTTOM that the drawing fills", any);
  segment("--at", "ROW,COLUMN of the picture or drawing", any);
  segment("--level", "Display level of the picture or drawing", any);
  segment("--attach", "Level that the picture or drawing is attached to", any);
  segment("--text", "Append a text", any);
}

void DefineCreate(CLI::App &app, ntf::CreateOptions &options) {
  CLI::App *create = app.add_subcommand("create", "Build a file from pictures, drawings and texts, in the order given");
  DefineItems(*create, options);
  create->callback([create, &options] { TakeItems(*create, options.items); });
}

void DefineAppend(CLI::App &app, ntf::CreateOptions &options) {
  CLI::App *append = app.add_subcommand("append", "Append pictures, drawings and texts to a file");
  append->add_option("IN", options.input, "NITF file")->required();
  DefineItems(*append, options);
  append->callback([append, &options] { TakeItems(*append, options.items); });
}

void DefineSet(CLI::App &app, ntf::SetOptions &options) {
  CLI::App *set = app.add_subcommand("set", "Change header fields");
  set->set_version_flag("--version", "ntf " NTF_VERSION);
  set->add_option("IN", options.input, "NITF file")->required();
  set->add_option("FIELD=VALUE", options.fields, "Fields by their names in the standard")->required();
  set->add_option("-o,--output", options.output, "File to write")->required();
  set->add_flag("--force", options.force, "Overwrite a file that is there");
  CLI::Option *image = set->add_option("--image", options.image, "Of this image, counted from 0");
  CLI::Option *graphic = set->add_option("--graphic", options.graphic, "Of this graphic")->excludes(image);
  set->add_option("--text", options.text, "Of this text")->excludes(image)->excludes(graphic);
}

std::string UsageError(const CLI::App *app, const CLI::Error &error) {
  std::string command = "ntf";
  for (const CLI::App *chosen : app->get_subcommands()) command += " " + chosen->get_name();
  return "ntf: " + std::string(error.what()) + "\nTry '" + command + " --help'.\n";
}

ntf::Outcome RunFileCommand(const CLI::App &app, const Request &request) {
  if (app.got_subcommand("text")) return ntf::PrintTexts(request.text);
  if (app.got_subcommand("extract")) return ntf::Extract(request.extract);
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
  if (failed) ntf::Report(*failed);
  return failed ? kFileFault : kDone;
}

int RunCommandLine(int argc, char **argv) {
  Request request;
  CLI::App app("Looks at NITF 2.1 files, draws them, builds them, takes them apart, changes and checks them.", "ntf");
  app.set_version_flag("--version", "ntf " NTF_VERSION);
  app.require_subcommand(1);
  app.failure_message(UsageError);
  DefineInfo(app, request.info);
  DefineRender(app, request.render);
  DefineText(app, request.text);
  DefineExtract(app, request.extract);
  DefineCopy(app, request.copy);
  DefineCheck(app, request.check);
  DefineCreate(app, request.create);
  DefineAppend(app, request.append);
  DefineSet(app, request.set);
  app.set_help_all_flag("--help-all", "Print the options of all commands and exit");
  try {
    app.parse(argc, argv);
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
