#include "info_text.h"

#include "printable.h"

#include <algorithm>
#include <cstdlib>

namespace ntf {
namespace {

/** The value of a field as text; empty if the object doesn't have it. */
std::string Plain(const Json &object, const char *field) {
  const auto value = object.find(field);
  if (value == object.end() || value->is_null()) return {};
  return value->is_string() ? value->get<std::string>() : value->dump();
}

void AddLine(std::string &text, const std::string &name, const std::string &value) {
  constexpr std::size_t kNameCells = 12;
  if (value.empty()) return;
  std::string line = "  " + name;
  line.resize(std::max(line.size() + 1, kNameCells + 2), ' ');
  text += line + WithoutControls(value) + '\n';
}

/** Appends ", WORDS VALUE" if there is a value. */
void AddPhrase(std::string &line, const std::string &words, const std::string &value) {
  if (value.empty()) return;
  if (!line.empty()) line += ", ";
  line += words.empty() ? value : words + " " + value;
}

/** A location field: row and column, five characters each. */
std::string Location(const std::string &field) {
  if (field.size() != 2 * kLocationHalf) return field;
  const int row = std::atoi(field.substr(0, kLocationHalf).c_str());
  const int column = std::atoi(field.substr(kLocationHalf).c_str());
  return "row " + std::to_string(row) + " column " + std::to_string(column);
}

/** The fields of all displayable segments, whose names start with the prefix of their kind. */
void AddPlacement(std::string &line, const Json &segment, const std::string &prefix) {
  const std::string attachment = Plain(segment, (prefix + "ALVL").c_str());
  AddPhrase(line, "display level", Plain(segment, (prefix + "DLVL").c_str()));
  AddPhrase(line, "attached to", attachment == "0" ? "nothing" : attachment);
  AddPhrase(line, "at", Location(Plain(segment, (prefix + "LOC").c_str())));
}

std::string Bands(const Json &image) {
  const std::size_t count = image["bands"].size();
  const std::string bits = Plain(image, "NBPP");
  return std::to_string(count) + (count == 1 ? " band of " : " bands of ") + bits + (bits == "1" ? " bit" : " bits");
}

std::string ImageLine(const Json &image) {
  std::string line = Plain(image, "NCOLS") + " x " + Plain(image, "NROWS");
  AddPhrase(line, "", Plain(image, "IREP"));
  AddPhrase(line, "", Bands(image));
  AddPhrase(line, "IC", Plain(image, "IC"));
  AddPhrase(line, "mode", Plain(image, "IMODE"));
  AddPlacement(line, image, "I");
  AddPhrase(line, "", Plain(image, "IID1"));
  return line;
}

std::string GraphicLine(const Json &graphic) {
  std::string line = Plain(graphic, "dataLength") + " bytes";
  AddPlacement(line, graphic, "S");
  AddPhrase(line, "", Plain(graphic, "SNAME"));
  return line;
}

std::string TextLine(const Json &textSegment) {
  std::string line = Plain(textSegment, "dataLength") + " bytes";
  AddPhrase(line, "format", Plain(textSegment, "TXTFMT"));
  AddPhrase(line, "", Plain(textSegment, "TXTITL"));
  return line;
}

std::string LabelLine(const Json &label) {
  std::string line = Plain(label, "dataLength") + " bytes";
  AddPlacement(line, label, "L");
  return line;
}

std::string DataExtensionLine(const Json &extension) {
  std::string line = Plain(extension, "dataLength") + " bytes";
  AddPhrase(line, "", Plain(extension, "DESID"));
  return line;
}

struct SegmentLines {
  const char *key;
  const char *name;
  std::string (*line)(const Json &segment);
};

constexpr SegmentLines kSegmentLines[] = {
    {"images", "image", ImageLine},
    {"graphics", "graphic", GraphicLine},
    {"labels", "label", LabelLine},
    {"texts", "text", TextLine},
    {"dataExtensions", "extension", DataExtensionLine},
};

std::string CanvasLine(const Json &description) {
  const Json &canvas = description["canvas"];
  if (!IsDrawn(description)) return "nothing to draw";
  if (canvas.is_null()) return "unknown (status " + Plain(description, "canvasStatus") + ")";
  return Plain(canvas, "width") + " x " + Plain(canvas, "height");
}

}  // namespace

std::string Summarize(const std::string &fileName, const Json &description) {
  const Json &header = description["file"];
  std::string text = WithoutControls(fileName) + '\n';
  AddLine(text, "format",
          Plain(header, "FHDR") + " " + Plain(header, "FVER") + ", compliance level " + Plain(header, "CLEVEL") + ", " +
              Plain(header, "FL") + " bytes");
  AddLine(text, "title", Plain(header, "FTITLE"));
  AddLine(text, "origin", Plain(header, "OSTAID"));
  AddLine(text, "date", Plain(header, "FDT"));
  AddLine(text, "security", Plain(header, "FSCLAS"));
  AddLine(text, "canvas", CanvasLine(description));
  for (const SegmentLines &kind : kSegmentLines) {
    for (const Json &segment : description[kind.key]) {
      AddLine(text, kind.name + (" " + Plain(segment, "index")), kind.line(segment));
    }
  }
  for (const Json &note : description.value("notes", Json::array())) AddLine(text, "note", Plain(note, "note"));
  return text;
}

}  // namespace ntf
