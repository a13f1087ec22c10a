#include "include_graph.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <optional>
#include <sstream>

namespace fs = std::filesystem;

namespace {

/** Where product code is, and what an include in quotes may be relative to, beside the file's own folder. */
constexpr const char *kFolders[] = {"include", "ntf", "services", "tools"};
constexpr const char *kRoots[] = {"include", "ntf/common", "services", "services/platform"};

bool IsSource(const fs::path &path) {
  return path.extension() == ".h" || path.extension() == ".cpp";
}

/** The header that a line includes, with its brackets or quotes. */
std::optional<std::string> HeaderOf(const std::string &line) {
  const std::string directive = "#include ";
  const std::size_t start = line.find_first_not_of(' ');
  if (start == std::string::npos || line.compare(start, directive.size(), directive) != 0) return std::nullopt;
  const std::string rest = line.substr(start + directive.size());
  const std::size_t end = rest.find(rest.front() == '<' ? '>' : '"', 1);
  return end == std::string::npos ? std::nullopt : std::optional(rest.substr(0, end + 1));
}

std::optional<fs::path> Resolve(const fs::path &root, const fs::path &file, const std::string &header) {
  std::vector<fs::path> candidates = {file.parent_path() / header};
  for (const char *folder : kRoots) candidates.push_back(fs::path(folder) / header);
  for (const fs::path &candidate : candidates) {
    if (fs::exists(root / candidate)) return candidate.lexically_normal();
  }
  return std::nullopt;
}

std::string UnitOf(const fs::path &file) {
  return (file.parent_path() / file.stem()).generic_string();
}

void AddFile(const fs::path &root, const fs::path &file, IncludeGraph *graph) {
  graph->units[UnitOf(file)];
  graph->folders[file.parent_path().generic_string()];
  std::ifstream in(root / file);
  for (std::string line; std::getline(in, line);) {
    const std::optional<std::string> header = HeaderOf(line);
    if (!header) continue;
    const std::string name = header->substr(1, header->size() - 2);
    if (header->front() == '<') {
      graph->foreign.push_back({file.generic_string(), name});
      continue;
    }
    const std::optional<fs::path> target = Resolve(root, file, name);
    if (!target) {
      graph->unresolved.push_back(file.generic_string() + ": " + name);
      continue;
    }
    if (UnitOf(*target) != UnitOf(file)) graph->units[UnitOf(file)].insert(UnitOf(*target));
    if (target->parent_path() != file.parent_path()) {
      graph->folders[file.parent_path().generic_string()].insert(target->parent_path().generic_string());
    }
  }
}

}  // namespace

IncludeGraph ReadIncludes(const fs::path &root) {
  IncludeGraph graph;
  for (const char *folder : kFolders) {
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(root / folder)) {
      if (entry.is_regular_file() && IsSource(entry.path())) AddFile(root, fs::relative(entry.path(), root), &graph);
    }
  }
  return graph;
}

std::vector<std::string> FindCircle(const Graph &graph) {
  std::set<std::string> finished;
  std::vector<std::string> trail;
  const std::function<bool(const std::string &)> visit = [&](const std::string &node) {
    const auto seen = std::find(trail.begin(), trail.end(), node);
    if (seen != trail.end()) {
      trail.erase(trail.begin(), seen);
      return true;
    }
    if (finished.count(node) != 0) return false;
    trail.push_back(node);
    const auto targets = graph.find(node);
    if (targets != graph.end()) {
      for (const std::string &target : targets->second) {
        if (visit(target)) return true;
      }
    }
    trail.pop_back();
    finished.insert(node);
    return false;
  };
  for (const auto &[node, targets] : graph) {
    if (visit(node)) return trail;
  }
  return {};
}

std::string Draw(const Graph &folders) {
  std::ostringstream dot;
  dot << "digraph house {\n  rankdir=TB;\n  node [shape=box];\n";
  for (const auto &[folder, targets] : folders) {
    dot << "  \"" << folder << "\";\n";
    for (const std::string &target : targets) dot << "  \"" << folder << "\" -> \"" << target << "\";\n";
  }
  dot << "}\n";
  return dot.str();
}
