#include "help_format.h"

#include "printable.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace ntf {
namespace {

/** How many characters have to be added, removed or replaced. */
std::size_t Distance(std::string_view one, std::string_view other) {
  std::vector<std::size_t> row(other.size() + 1);
  for (std::size_t column = 0; column < row.size(); ++column) row[column] = column;
  for (const char character : one) {
    std::size_t diagonal = row[0]++;
    for (std::size_t column = 1; column < row.size(); ++column) {
      const std::size_t replaced = diagonal + (character == other[column - 1] ? 0 : 1);
      diagonal = row[column];
      row[column] = std::min({replaced, row[column] + 1, row[column - 1] + 1});
    }
  }
  return row.back();
}

std::string Replaced(std::string text, std::string_view part, std::string_view other) {
  const std::size_t place = text.find(part);
  return place == std::string::npos ? text : text.replace(place, part.size(), other);
}

/** The words of an error, where those of the parser are not a user's. */
std::string UsageWords(const CLI::Error &error) {
  std::string words = error.what();
  const std::string kind = error.get_name();
  if (kind == "ArgumentMismatch") {
    const std::string name = words.substr(0, words.find_first_of(": "));
    const std::string option = name.starts_with('-') || words.find("flag") == std::string::npos ? name : "--" + name;
    if (words.find("At Most") != std::string::npos) return option + " can be given only once";
    return option + (words.find("flag override") != std::string::npos ? " has no value" : " requires a value");
  }
  if (kind == "ExcludesError") return Replaced(words, " excludes ", " can't be combined with ");
  if (words.starts_with("The following argument")) {
    const std::string extra = words.substr(words.find(": ") + 2);
    return (extra.starts_with('-') ? "no option '" : "unexpected argument '") + extra + "'";
  }
  return words;
}

}  // namespace

HelpFormat::HelpFormat() {
  label("Positionals", "Arguments");
  column_width(26);
}

std::string HelpFormat::make_group(std::string group, bool isPositional,
                                   std::vector<const CLI::Option *> options) const {
  const std::string text = Formatter::make_group(group, isPositional, std::move(options));
  // There is already an empty line behind the first group.
  const bool isFirst = isPositional || group == "Options";
  return isFirst ? text : text.substr(1);
}

std::string HelpFormat::make_usage(const CLI::App *app, std::string name) const {
  std::string usage = "Usage: " + name;
  for (const CLI::Option *option : app->get_options([](const CLI::Option *one) { return one->get_positional(); })) {
    usage += " " + make_option_usage(option);
  }
  for (const CLI::Option *option : app->get_options([](const CLI::Option *one) { return one->nonpositional(); })) {
    if (option->get_required()) usage += " -" + option->get_snames().at(0) + make_option_opts(option);
  }
  const bool hasCommands = app->get_require_subcommand_min() != 0;
  return usage + (hasCommands ? " COMMAND [OPTION...]\n" : " [OPTION...]\n");
}

std::string HelpFormat::make_option_name(const CLI::Option *option, bool isPositional) const {
  return Replaced(Formatter::make_option_name(option, isPositional), ",", ", ");
}

std::string HelpFormat::make_option_opts(const CLI::Option *option) const {
  return option->get_type_name().empty() ? std::string() : " " + option->get_type_name();
}

std::string HelpFormat::make_option_desc(const CLI::Option *option) const {
  const std::string standard = option->get_default_str();
  return option->get_description() + (standard.empty() ? "" : " (default " + standard + ")");
}

std::string UsageError(const CLI::App *app, const CLI::Error &error) {
  std::string command = "ntf";
  for (const CLI::App *chosen : app->get_subcommands()) command += " " + chosen->get_name();
  return "ntf: " + WithoutControls(UsageWords(error)) + "\nTry '" + command + " --help'.\n";
}

std::optional<std::string> UnknownCommand(const CLI::App &app, const std::vector<std::string> &arguments) {
  constexpr std::string_view kList = "'ntf --help' lists them";
  if (arguments.empty()) return "no command; " + std::string(kList);
  const std::string name = WithoutControls(arguments[0]);
  const auto options = app.get_options([&](const CLI::Option *option) { return option->check_name(name); });
  if (!options.empty()) return std::nullopt;
  if (name.starts_with('-')) return "no option '" + name + "' in front of a command; 'ntf --help' lists both";
  constexpr std::size_t kSimilar = 2;
  std::string hint(kList);
  for (const CLI::App *command : app.get_subcommands([](const CLI::App *) { return true; })) {
    const std::size_t distance = Distance(name, command->get_name());
    if (distance == 0) return std::nullopt;
    if (distance <= kSimilar) hint = "did you mean '" + command->get_name() + "'?";
  }
  return "no command '" + name + "'; " + hint;
}

}  // namespace ntf
