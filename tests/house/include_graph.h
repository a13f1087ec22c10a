// The includes of the project's own code, from the lines of its sources.
#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

/** A graph by names: what each node points to. */
using Graph = std::map<std::string, std::set<std::string>>;

/** An include in angle brackets. */
struct ForeignInclude {
  std::string file;   /**< path in the project */
  std::string header; /**< what stands between the brackets */
};

struct IncludeGraph {
  Graph units;   /**< a unit is a header with its source: path without extension */
  Graph folders; /**< folders of those units */
  std::vector<ForeignInclude> foreign;
  std::vector<std::string> unresolved; /**< "file: header" of an include in quotes that is no file of the project */
};

/** Reads all headers and sources in the folders of product code. */
IncludeGraph ReadIncludes(const std::filesystem::path &root);

/** The nodes of a circle, in its order; empty where there is none. */
std::vector<std::string> FindCircle(const Graph &graph);

/** The graph of folders in the DOT language, the floors below each other. */
std::string Draw(const Graph &folders);
