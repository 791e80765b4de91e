#include "modelreader/ByteReader.h"

#include <cstring>

#include "modelreader/LittleEndian.h"

namespace mapexport {

namespace {

constexpr std::uint64_t kFloatBytes = 4;
constexpr std::uint32_t kExponentBits = 0x7F800000;  // all set: infinite or NaN

bool IsFinite(const std::byte* bytes) {
  return (U32At(bytes) & kExponentBits) != kExponentBits;
}

}  // namespace

bool ByteReader::StandsAt(std::uint64_t offset, std::uint32_t number) const {
  return offset <= bytes_.size() && bytes_.size() - offset >= 4 &&
         U32At(bytes_.data() + offset) == number;
}

bool ByteReader::StandsAt(std::uint64_t offset, std::string_view text) const {
  const std::uint64_t length = text.size() + 1;
  if (!StandsAt(offset, static_cast<std::uint32_t>(length))) return false;
  const std::span<const std::byte> rest = bytes_.subspan(offset + 4);
  return rest.size() >= length && std::memcmp(rest.data(), text.data(), text.size()) == 0 &&
         rest[text.size()] == std::byte{0};
}

std::span<const std::byte> ByteReader::Bytes(std::uint64_t count, const Place& place) {
  if (count > Left()) {
    if (!EndCuts()) {
      problems_.Add(ModelProblemCode::kCut, offset_, place, count, Left(), WhatEnds());
    }
    throw Unreadable{};
  }
  const std::span<const std::byte> taken = bytes_.subspan(offset_, count);
  offset_ += count;
  return taken;
}

std::span<const std::byte> ByteReader::Floats(std::uint64_t entries, std::uint64_t floatsEach,
                                              const Place& place) {
  const std::uint64_t start = offset_;
  const std::uint64_t floats = entries * floatsEach;
  const std::span<const std::byte> bytes = Bytes(floats * kFloatBytes, place);
  std::uint64_t notFinite = 0;
  for (std::uint64_t i = 0; i < floats; ++i) {
    if (!IsFinite(bytes.data() + i * kFloatBytes)) ++notFinite;
  }
  if (notFinite > 0) {
    std::uint64_t first = 0;
    while (IsFinite(bytes.data() + first * kFloatBytes)) ++first;
    problems_.AddNotFinite(notFinite, start + first * kFloatBytes, place.At(first / floatsEach),
                           F32At(bytes.data() + first * kFloatBytes));
  }
  return bytes;
}

std::uint8_t ByteReader::U8(const Place& place) {
  return std::to_integer<std::uint8_t>(Bytes(1, place)[0]);
}

std::uint32_t ByteReader::U32(const Place& place) {
  return U32At(Bytes(4, place).data());
}

std::int32_t ByteReader::I32(const Place& place) {
  return static_cast<std::int32_t>(U32(place));
}

float ByteReader::F32(const Place& place) {
  const std::byte* bytes = Bytes(kFloatBytes, place).data();
  const float value = F32At(bytes);
  if (!IsFinite(bytes)) problems_.AddNotFinite(1, offset_ - kFloatBytes, place, value);
  return value;
}

std::string ByteReader::Text(const Place& place) {
  const std::uint64_t start = offset_;
  const std::uint32_t length = U32(place);
  if (length == 0) {
    problems_.Add(ModelProblemCode::kTextEmpty, start, place);
    throw Unreadable{};
  }
  const std::span<const std::byte> bytes = Bytes(length, place);
  if (bytes.back() != std::byte{0}) {
    problems_.Add(ModelProblemCode::kTextNoEnd, offset_ - 1, place, length,
                  std::to_integer<unsigned>(bytes.back()));
    throw Unreadable{};
  }
  const auto* text = reinterpret_cast<const char*>(bytes.data());
  const std::uint32_t textLength = static_cast<std::uint32_t>(std::strlen(text));
  if (textLength + 1 != length) {
    problems_.Add(ModelProblemCode::kTextNul, start + 4 + textLength, place, textLength, length);
  }
  return std::string(text, textLength);
}

std::uint32_t ByteReader::Count(std::uint64_t entryBytes, const Place& place) {
  const std::uint64_t start = offset_;
  const std::uint32_t count = U32(place);
  if (count > Left() / entryBytes) {
    if (!EndCuts()) {
      problems_.Add(ModelProblemCode::kCountTooLarge, start, place, count, entryBytes, Left(),
                    WhatEnds());
    }
    throw Unreadable{};
  }
  return count;
}

}  // namespace mapexport
