// Records and chunks: a size field, a header, and a body that the size counts.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "modelreader/ByteReader.h"
#include "modelreader/ModelFile.h"
#include "modelreader/Place.h"

namespace mapexport {

inline constexpr std::string_view kVersionText = "Version";

/// Reads one record at `place`: its size field, then what `header` and `body` read. The body must
/// take just the bytes that the size gives.
///
/// When it does not, or when it can't be read to its end, reading goes on where `isNext` finds what
/// must follow the record: at the body's own end, or at the end that the size gives. Where it is at
/// neither, this throws Unreadable.
void ReadSizedRecord(ByteReader& in, const Place& place, const std::function<void()>& header,
                     const std::function<void()>& body,
                     const std::function<bool(std::uint64_t offset)>& isNext);

/// Reads a record's header and checks its constants.
ModelHeader ReadHeader(ByteReader& in, const Place& place, std::uint32_t typeCode,
                       std::uint32_t version);

/// Whether a record of this type may begin, with its size field, at `offset` of the file.
bool RecordStandsAt(const ByteReader& in, std::uint64_t offset, std::uint32_t typeCode);

}  // namespace mapexport
