// Face flags: the keywords in a node's user property text.
#pragma once

#include <array>
#include <cstdint>

#include "host/INode.h"

namespace mapexport {

inline constexpr std::uint32_t kFlagNotRendered = 0x04;
inline constexpr std::uint32_t kFlagStatic = 0x80;  ///< a "static" node's set; no keyword gives it

struct FaceFlagKeyword {
  const char* keyword;
  std::uint32_t bit;
};

/// The keywords in the order of the search. The program has its own list (system/FaceKeywords.h); a
/// test compares the two.
inline constexpr std::array<FaceFlagKeyword, 7> kFaceFlagKeywords{{
    {"climbable", 0x01},
    {"notcollidable", 0x02},
    {"notcollidable3d", 0x08},
    {"notrendered", kFlagNotRendered},
    {"floorface", 0x10},
    {"45plusfloor", 0x40},
    {"notshownplan", 0x20},
}};

/// The bits of every keyword that the node's user property text holds.
std::uint32_t FaceFlagsOf(const INode* node);

/// Whether the keyword is a token of the node's user property text, exactly and case-sensitively.
/// Tokens end at tab, line feed and carriage return; blanks are part of a token. False for an empty
/// keyword and for no node.
bool HasKeyword(const char* keyword, const INode* node);

}  // namespace mapexport
