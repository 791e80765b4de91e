#include "output/TakenFiles.h"

#include <fmt/format.h>

#include "system/RunError.h"

namespace mapexport {

void TakenFiles::Add(const std::string& path, const std::string& what) {
  if (const auto identity = IdentityOf(path)) files_.try_emplace(*identity, what);
}

std::string TakenFiles::WhatIs(const std::string& path) const {
  const auto identity = IdentityOf(path);
  const auto found = identity ? files_.find(*identity) : files_.end();
  return found == files_.end() ? std::string() : found->second;
}

void TakenFiles::RequireFree(const OutputTarget& target) const {
  const std::string what = WhatIs(target.path);
  if (what.empty()) return;
  throw RunError(fmt::format("{}: cannot be written: it is the {} itself", target.name, what));
}

void TakenFiles::RequireNotStandardOutput() const {
  RequireFree({"standard output", "/proc/self/fd/1", std::nullopt});
}

}  // namespace mapexport
