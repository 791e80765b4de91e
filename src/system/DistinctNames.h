// Short names for two files that tell them apart.
#pragma once

#include <array>
#include <string>

namespace mapexport {

/// The shortest ends of two paths that differ, in whole names: "new.kob" and "old.kob", or
/// "a/level.kob" and "b/level.kob". When one path is an end of the other, it is whole. Equal paths
/// give their last name twice.
std::array<std::string, 2> DistinctNames(const std::string& a, const std::string& b);

}  // namespace mapexport
