#include "check.h"

#include "findings.h"
#include "info_json.h"
#include "load_headers.h"
#include "printable.h"

#include <cstdio>

namespace ntf {
namespace {

struct Checked {
  std::vector<Finding> findings;
  Outcome problem; /* if the file can't be read */
};

Checked CheckFile(const std::string &name) {
  LoadedFile file;
  Checked checked;
  checked.problem = LoadHeaders(name, file);
  checked.findings = checked.problem ? FindLoadFaults(file.View()) : FindFaults(file.View());
  return checked;
}

void PrintFindings(const std::string &name, const std::vector<Finding> &findings) {
  for (const Finding &finding : findings) {
    std::printf("%s: %s at byte %llu: %s\n", WithoutControls(name).c_str(), finding.field.c_str(),
                static_cast<unsigned long long>(finding.offset), WithoutControls(finding.words).c_str());
  }
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
  Json all = Json::array();
  for (const std::string &name : options.files) {
    const Checked checked = CheckFile(name);
    if (checked.problem) Report(*checked.problem);
    if (checked.problem || !checked.findings.empty()) clean = false;
    if (options.json) {
      all.push_back(DescribeFindings(name, checked));
    } else {
      PrintFindings(name, checked.findings);
    }
  }
  if (options.json) std::printf("%s\n", (all.size() == 1 ? all[0] : all).dump(2).c_str());
  return clean;
}

}  // namespace ntf
