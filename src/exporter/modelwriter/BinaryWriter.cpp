#include "exporter/modelwriter/BinaryWriter.h"

#include <algorithm>
#include <array>

namespace mapexport {

BinaryWriter::BinaryWriter(std::ostream& stream)
    : stream_(stream),
      start_(stream.tellp()),
      buffer_(std::make_unique_for_overwrite<char[]>(kBufferSize)) {}

BinaryWriter::~BinaryWriter() {
  Flush();
}

void BinaryWriter::LString(std::string_view text) {
  Count(text.size() + 1);
  while (!text.empty()) {
    if (used_ == kBufferSize) Flush();
    const std::size_t piece = std::min(text.size(), kBufferSize - used_);
    std::memcpy(buffer_.get() + used_, text.data(), piece);
    used_ += piece;
    text.remove_prefix(piece);
  }
  U8(0);
}

void BinaryWriter::PatchU32(std::uint64_t position, std::uint32_t value) {
  if (position >= flushed_) {
    BinaryCursor(buffer_.get() + (position - flushed_)).U32(value);
    return;
  }
  // The whole field is out: a number is never split between the buffer and the stream.
  std::array<char, sizeof value> bytes;
  BinaryCursor(bytes.data()).U32(value);
  stream_.seekp(start_ + static_cast<std::streamoff>(position));
  stream_.write(bytes.data(), bytes.size());
  stream_.seekp(start_ + static_cast<std::streamoff>(flushed_));
}

void BinaryWriter::Flush() {
  stream_.write(buffer_.get(), static_cast<std::streamsize>(used_));
  flushed_ += used_;
  used_ = 0;
}

}  // namespace mapexport
