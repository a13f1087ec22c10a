#include "check.h"

#include "findings.h"
#include "info_json.h"
#include "load_fault.h"
#include "load_headers.h"
#include "printable.h"
#include "segment_choice.h"
#include "standard_output.h"

#include <algorithm>

namespace ntf {
namespace {

struct Checked {
  std::vector<Finding> findings;
  Outcome problem; /* if the file can't be read */
};

/** What the reading of the headers has noted, in front of what is inconsistent. */
void AddNotes(const LoadedFile &file, std::vector<Finding> &findings) {
  std::vector<Finding> notes;
  for (const FileNote &note : file.Notes()) {
    const Finding found = {NameIn(note.header, note.field), note.offset, note.fault};
    const bool isKnown = std::any_of(findings.begin(), findings.end(), [&](const Finding &other) {
      return other.field == found.field && other.offset == found.offset;
    });
    if (!isKnown) notes.push_back(found);
  }
  findings.insert(findings.begin(), notes.begin(), notes.end());
}

Checked CheckFile(const std::string &name, Door door) {
  LoadedFile file;
  Checked checked;
  checked.problem = LoadHeaders(name, file, door);
  if (!checked.problem) {
    std::vector<HeaderChoice> unread;
    for (const FileNote &note : file.Notes()) {
      if (note.isUnread) unread.push_back(note.header);
    }
    checked.findings = FindFaults(file.View(), unread);
    AddNotes(file, checked.findings);
  } else if (auto fault = FindLoadFault(file.View(), checked.problem->status)) {
    checked.findings.push_back(std::move(*fault));
  }
  return checked;
}

std::string LinesOf(const std::string &name, const std::vector<Finding> &findings) {
  std::string lines;
  for (const Finding &finding : findings) {
    lines += WithoutControls(name + ": " + finding.field + " at byte " + std::to_string(finding.offset) + ": " +
                             finding.words) +
             '\n';
  }
  return lines;
}

Json DescribeFindings(const std::string &name, const Checked &checked) {
  Json findings = Json::array();
  for (const Finding &finding : checked.findings) {
    findings.push_back(
        {{"field", finding.field}, {"offset", finding.offset}, {"finding", Latin1ToUtf8(finding.words)}});
  }
  Json file = {{"name", name}, {"ok", !checked.problem && checked.findings.empty()}};
  if (checked.problem) file["status"] = checked.problem->status;
  file["findings"] = std::move(findings);
  return file;
}

}  // namespace

bool Check(const CheckOptions &options) {
  bool clean = true;
  Outcome unprinted;
  Json all = Json::array();
  for (const std::string &name : options.files) {
    const Checked checked = CheckFile(name, options.door);
    if (checked.problem) Report(*checked.problem);
    if (checked.problem || !checked.findings.empty()) clean = false;
    if (options.json) {
      all.push_back(DescribeFindings(name, checked));
    } else if (!unprinted) {
      unprinted = PrintOutput(LinesOf(name, checked.findings));
    }
  }
  if (options.json) unprinted = PrintOutput(TextOf(all.size() == 1 ? all[0] : all));
  if (!unprinted) unprinted = FlushOutput();
  if (unprinted) Report(*unprinted);
  return clean && !unprinted;
}

}  // namespace ntf
