// Little-endian output with sizes that are filled in once they are known.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <ostream>
#include <string_view>

#include "host/Point3.h"

namespace mapexport {

/// Stores numbers one after the other where there is room for them.
class BinaryCursor {
 public:
  explicit BinaryCursor(char* place) : place_(place) {}

  void U8(std::uint8_t value) { Put(value); }
  /// The low 16 bits of `value`.
  void U16(std::uint32_t value) { Put(static_cast<std::uint16_t>(value)); }
  void U32(std::uint32_t value) { Put(value); }
  void I32(std::int32_t value) { Put(static_cast<std::uint32_t>(value)); }
  void F32(float value) { Put(std::bit_cast<std::uint32_t>(value)); }
  void Point(const Point3& p) {
    F32(p.x);
    F32(p.y);
    F32(p.z);
  }

 private:
  template <typename Unsigned>
  void Put(Unsigned value) {
    if constexpr (std::endian::native == std::endian::little) {
      std::memcpy(place_, &value, sizeof value);
    } else {
      for (std::size_t i = 0; i < sizeof value; ++i) {
        place_[i] = static_cast<char>((value >> (8 * i)) & 0xFF);
      }
    }
    place_ += sizeof value;
  }

  char* place_;
};

/// Writes numbers and texts to a seekable binary stream through a buffer. Ignores the stream's
/// state: whoever opened it checks the result. After Flush or the destructor everything is in the
/// stream.
class BinaryWriter {
 public:
  explicit BinaryWriter(std::ostream& stream);
  ~BinaryWriter();
  BinaryWriter(const BinaryWriter&) = delete;
  BinaryWriter& operator=(const BinaryWriter&) = delete;

  void U8(std::uint8_t value) { Room(sizeof value).U8(value); }
  /// The low 16 bits of `value`.
  void U16(std::uint32_t value) { Room(sizeof(std::uint16_t)).U16(value); }
  void U32(std::uint32_t value) { Room(sizeof value).U32(value); }
  void I32(std::int32_t value) { Room(sizeof value).I32(value); }
  void F32(float value) { Room(sizeof value).F32(value); }
  /// `count` entries of `size` bytes each. Calls `put` with a cursor and the entry's number; it
  /// stores exactly `size` bytes.
  template <typename Put>
  void Entries(std::size_t count, std::size_t size, const Put& put) {
    for (std::size_t i = 0; i < count;) {
      if (kBufferSize - used_ < size) Flush();
      BinaryCursor cursor(buffer_.get() + used_);
      const std::size_t end = std::min(count, i + (kBufferSize - used_) / size);
      used_ += (end - i) * size;
      for (; i < end; ++i) put(cursor, i);
    }
  }
  /// The length plus one, the bytes, a NUL.
  void LString(std::string_view text);
  /// The number of entries, cut to 32 bits.
  void Count(std::size_t count) { U32(static_cast<std::uint32_t>(count)); }

  /// Bytes written so far.
  std::uint64_t Position() const { return flushed_ + used_; }
  /// Overwrites the u32 at `position`, written before.
  void PatchU32(std::uint64_t position, std::uint32_t value);
  void Flush();

 private:
  /// Writing a file in pieces of this size takes a third less time than in quarters of it.
  static constexpr std::size_t kBufferSize = std::size_t{1} << 20;

  /// Takes `size` bytes of the buffer, to be stored at once.
  BinaryCursor Room(std::size_t size) {
    if (kBufferSize - used_ < size) Flush();
    used_ += size;
    return BinaryCursor(buffer_.get() + used_ - size);
  }

  std::ostream& stream_;
  std::streamoff start_;            ///< the stream's position at the beginning
  std::unique_ptr<char[]> buffer_;  ///< of kBufferSize bytes
  std::size_t used_ = 0;
  std::uint64_t flushed_ = 0;  ///< bytes that have left the buffer
};

/// The u32 in front of a body that holds its size: written as 0, filled in after the body.
class SizeField {
 public:
  /// Writes the placeholder.
  explicit SizeField(BinaryWriter& out) : out_(out), place_(out.Position()) { out.U32(0); }
  /// The bytes that count begin here.
  void BeginBody() { body_ = out_.Position(); }
  /// The bytes that count end here. Fills in their number, cut to 32 bits.
  void EndBody() { out_.PatchU32(place_, static_cast<std::uint32_t>(out_.Position() - body_)); }

 private:
  BinaryWriter& out_;
  std::uint64_t place_;
  std::uint64_t body_ = 0;
};

}  // namespace mapexport
