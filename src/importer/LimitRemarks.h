// Bounds what is said about one scene.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "system/Remark.h"

namespace mapexport {

inline constexpr std::size_t kMostRemarks = 4096;
/// Bytes of a remark's text. Ours name a file or a node or two.
inline constexpr std::size_t kLongestRemark = 8192;

/// Cuts texts that are too long, and leaves at most kMostRemarks. The last ones then stand, each
/// for all others of its code, in the order in which these codes come.
void LimitRemarks(ImportRemarks& remarks);

/// "12 more warnings like these (CODE)"
std::string MoreLikeThese(std::uint64_t remarks, RemarkKind kind, const std::string& code);

}  // namespace mapexport
