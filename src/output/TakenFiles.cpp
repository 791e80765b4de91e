#include "output/TakenFiles.h"

#include <fmt/format.h>

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
  if (!what.empty()) ThrowCannotWrite(target.name, fmt::format("it is the {} itself", what));
}

}  // namespace mapexport
