// ntf: looks at NITF files, draws them, takes them apart, copies and checks them.
#include "check.h"
#include "copy.h"
#include "extract.h"
#include "info.h"
#include "ksntfx.h"
#include "picture.h"
#include "problem.h"
#include "render.h"
#include "text.h"

#include <cstdio>
#include <exception>
#include <string>

#include <CLI/CLI.hpp>

namespace {

enum ExitCode { kDone = 0, kFileFault = 1, kWrongUsage = 2 };

/** What the command line asks for. */
struct Request {
  ntf::InfoOptions info;
  ntf::RenderOptions render;
  ntf::TextOptions text;
  ntf::ExtractOptions extract;
  ntf::CopyOptions copy;
  ntf::CheckOptions check;
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

std::string UsageError(const CLI::App *app, const CLI::Error &error) {
  std::string command = "ntf";
  for (const CLI::App *chosen : app->get_subcommands()) command += " " + chosen->get_name();
  return "ntf: " + std::string(error.what()) + "\nTry '" + command + " --help'.\n";
}

int Run(const CLI::App &app, const Request &request) {
  SilenceLibrary();
  if (app.got_subcommand("info")) return ntf::Info(request.info) ? kDone : kFileFault;
  if (app.got_subcommand("check")) return ntf::Check(request.check) ? kDone : kFileFault;
  const ntf::Outcome failed = app.got_subcommand("text")      ? ntf::PrintTexts(request.text)
                              : app.got_subcommand("extract") ? ntf::Extract(request.extract)
                              : app.got_subcommand("copy")    ? ntf::Copy(request.copy)
                                                              : ntf::Render(request.render);
  if (failed) ntf::Report(*failed);
  return failed ? kFileFault : kDone;
}

int RunCommandLine(int argc, char **argv) {
  Request request;
  CLI::App app("Looks at NITF 2.1 files, draws them, takes them apart, copies and checks them.", "ntf");
  app.set_version_flag("--version", "ntf " NTF_VERSION);
  app.require_subcommand(1);
  app.failure_message(UsageError);
  DefineInfo(app, request.info);
  DefineRender(app, request.render);
  DefineText(app, request.text);
  DefineExtract(app, request.extract);
  DefineCopy(app, request.copy);
  DefineCheck(app, request.check);
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
