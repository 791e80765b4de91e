// Reads the encodings of a model file from its bytes, none of them past the end that holds at the
// moment.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "modelreader/Place.h"
#include "modelreader/ProblemList.h"

namespace mapexport {

/// Thrown, after the problem was noted, where what follows can't be read any more.
struct Unreadable {};

/// Every reading operation takes the place of what it reads. What does not fit into the bytes that
/// are left is a problem and throws Unreadable; nothing is allocated for it. Where the end is known
/// to cut a record, that was noted before and is not told again.
class ByteReader {
 public:
  /// Where reading must end.
  struct Bound {
    std::uint64_t end = 0;
    const Place* what = nullptr;  ///< the record that ends there; null: the file
    bool cuts = false;            ///< the record should be longer
  };

  ByteReader(std::span<const std::byte> bytes, ProblemList& problems)
      : problems_(problems), bytes_(bytes), bound_{.end = bytes.size()} {}
  ByteReader(const ByteReader&) = delete;
  ByteReader& operator=(const ByteReader&) = delete;

  std::uint64_t Offset() const { return offset_; }
  /// Where reading must end at the moment.
  std::uint64_t End() const { return bound_.end; }
  std::uint64_t Left() const { return bound_.end - offset_; }
  /// Whether a record that should be longer ends there.
  bool EndCuts() const { return bound_.cuts; }
  /// What ends there: "the file", or the path of a record.
  std::string WhatEnds() const { return bound_.what == nullptr ? "the file" : bound_.what->Path(); }
  ProblemList& Problems() { return problems_; }

  /// Goes on at `offset`, which must not lie past End().
  void Seek(std::uint64_t offset) { offset_ = offset; }
  /// Whether the u32 `number` stands at `offset` of the file.
  bool StandsAt(std::uint64_t offset, std::uint32_t number) const;
  /// Whether the lstring `text` stands at `offset` of the file.
  bool StandsAt(std::uint64_t offset, std::string_view text) const;

  /// The next `count` bytes.
  std::span<const std::byte> Bytes(std::uint64_t count, const Place& place);
  /// The bytes of `entries` list entries of `floatsEach` floats; warns of those that are not
  /// finite.
  std::span<const std::byte> Floats(std::uint64_t entries, std::uint64_t floatsEach,
                                    const Place& place);
  std::uint8_t U8(const Place& place);
  std::uint32_t U32(const Place& place);
  std::int32_t I32(const Place& place);
  float F32(const Place& place);
  /// An lstring. A text with a NUL inside is a problem, but is read up to there.
  std::string Text(const Place& place);
  /// The u32 count of a list whose entries take at least `entryBytes` each.
  std::uint32_t Count(std::uint64_t entryBytes, const Place& place);

  /// While it lives, another bound holds. Its end must lie between Offset() and End().
  class Scope {
   public:
    Scope(ByteReader& reader, const Bound& bound) : reader_(reader), old_(reader.bound_) {
      reader.bound_ = bound;
    }
    ~Scope() { reader_.bound_ = old_; }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    ByteReader& reader_;
    const Bound old_;
  };

 private:
  ProblemList& problems_;
  std::span<const std::byte> bytes_;
  std::uint64_t offset_ = 0;
  Bound bound_;
};

}  // namespace mapexport
