// Limits the number and the length of the remarks about one scene.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "system/Remark.h"

namespace mapexport {

inline constexpr std::size_t kMostRemarks = 4096;
/// Bytes of a remark's text; a usual one names a file or a node or two.
inline constexpr std::size_t kLongestRemark = 8192;

/// Bytes that the nodes' names of all remarks may take, by NodeBytes.
inline constexpr std::size_t kMostNodeBytes = std::size_t{4} << 20;

/// What a node's name counts of them.
inline std::size_t NodeBytes(std::string_view name) {
  return name.size() + sizeof(std::string);
}

/// Cuts texts longer than kLongestRemark, drops nodes beyond kMostNodeBytes, and leaves at most
/// kMostRemarks. If there are more, each of the last ones sums up all further ones of its code, in
/// the order of the codes' first remarks.
void LimitRemarks(Remarks& remarks);

/// "12 more warnings like these (CODE)"
std::string MoreLikeThese(std::uint64_t remarks, RemarkKind kind, const std::string& code);

}  // namespace mapexport
