// Reads the lists that group records are made of, each with its count.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "modelreader/ByteReader.h"
#include "modelreader/ModelFile.h"
#include "modelreader/Place.h"

namespace mapexport {

inline constexpr std::uint64_t kPointBytes = 12;
inline constexpr std::uint64_t kPlaneBytes = 16;
inline constexpr std::uint64_t kTripleBytes = 6;  ///< three indices of 16 bits

ModelPoint PointAt(const std::byte* bytes);
ModelPlane PlaneAt(const std::byte* bytes);
std::array<std::uint16_t, 3> TripleAt(const std::byte* bytes);

/// The count of a list that 16-bit indices address; warns when they can't address all of it.
std::uint32_t ReadIndexedCount(ByteReader& in, std::uint64_t entryBytes, const Place& list);
std::vector<ModelPoint> ReadPoints(ByteReader& in, const Place& list);
std::vector<ModelPlane> ReadPlanes(ByteReader& in, const Place& list);

}  // namespace mapexport
