// The form of the help, and the words of errors on the command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace ntf {

/** Options with their argument and their default; required ones in the line of usage. */
class HelpFormat : public CLI::Formatter {
 public:
  HelpFormat();
  std::string make_group(std::string group, bool isPositional, std::vector<const CLI::Option *> options) const override;
  std::string make_usage(const CLI::App *app, std::string name) const override;
  std::string make_option_name(const CLI::Option *option, bool isPositional) const override;
  std::string make_option_opts(const CLI::Option *option) const override;
  std::string make_option_desc(const CLI::Option *option) const override;
};

/** The message for an error of the command line. */
std::string UsageError(const CLI::App *app, const CLI::Error &error);

/** The words for a first argument that is neither a command nor an option of the program; none if it is one. */
std::optional<std::string> UnknownCommand(const CLI::App &app, const std::vector<std::string> &arguments);

}  // namespace ntf
