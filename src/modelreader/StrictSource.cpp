#include "modelreader/StrictSource.h"

#include <cmath>

#include <fmt/format.h>

namespace mapexport {

namespace {

constexpr std::uint64_t kFloatBytes = 4;

bool IsFiniteAt(const std::byte* bytes) {
  return std::isfinite(reader::detail::F32At(bytes));
}

}  // namespace

void StrictSource::IndicesCut(std::uint64_t offset, const char* field, std::uint32_t count) {
  problems_.Add(ModelFault::kIndicesCut, offset, At(field), count, reader::kIndexLimit);
}

std::string_view StrictSource::Shown(reader::Layout layout) {
  return layout == reader::Layout::kQob ? "qob" : "kob";
}

std::string StrictSource::Shown(reader::FaceFlag flags) {
  return fmt::format("{:#x}", std::uint32_t{flags});
}

float StrictSource::F32(const char* field) {
  const std::byte* const bytes = Bytes(kFloatBytes, field);
  const float value = reader::detail::F32At(bytes);
  if (!std::isfinite(value)) problems_.AddNotFinite(1, Offset() - kFloatBytes, At(field), value);
  return value;
}

void StrictSource::WarnOfNotFinite(const std::byte* data, std::uint64_t entries,
                                   std::uint64_t floatsEach, const char* field) {
  const std::uint64_t floats = entries * floatsEach;
  std::uint64_t notFinite = 0;
  for (std::uint64_t i = 0; i < floats; ++i) {
    if (!IsFiniteAt(data + i * kFloatBytes)) ++notFinite;
  }
  if (notFinite == 0) return;
  std::uint64_t first = 0;
  while (IsFiniteAt(data + first * kFloatBytes)) ++first;
  const std::byte* const number = data + first * kFloatBytes;
  problems_.AddNotFinite(notFinite, OffsetOf(number), At(field).At(first / floatsEach),
                         reader::detail::F32At(number));
}

void StrictSource::ReadBody(const Place& record, std::uint64_t end, bool cuts,
                            const std::function<void()>& body) {
  struct Bounds {
    std::uint64_t end;
    const Place* what;
    bool cuts;
  };
  const auto exchange = [this](const Bounds& bounds) {
    const Bounds old{End(), whatEnds_, endCuts_};
    SetEnd(bounds.end);
    whatEnds_ = bounds.what;
    endCuts_ = bounds.cuts;
    return old;
  };
  const Bounds outer = exchange({end, &record, cuts});
  try {
    body();
  } catch (...) {
    exchange(outer);
    throw;
  }
  exchange(outer);
}

void StrictSource::Record(const char* field, const std::function<void()>& header,
                          const std::function<void()>& body,
                          const std::function<bool(std::uint64_t offset)>& isNext) {
  const Place place = field == nullptr ? *place_ : At(field);
  const Place sizePlace(place, "size");
  const std::uint64_t sizeOffset = Offset();
  std::uint32_t size = 0;
  {
    const Inside record(*this, place);
    size = U32("size");
    header();
  }

  const std::uint64_t start = Offset();
  const bool fits = size <= Left();
  if (!fits && !endCuts_) {
    problems_.Add(reader::Fault::kSizeTooLarge, sizeOffset, sizePlace, size, Left(), WhatEnds());
  }
  const std::uint64_t end = fits ? start + size : End();
  try {
    ReadBody(place, end, !fits, body);
  } catch (const Unreadable&) {
    if (!fits || !isNext(end)) throw;
    Seek(end);
    return;
  }

  if (!fits || Offset() == end) return;
  problems_.Add(reader::Fault::kSizeLeftOver, sizeOffset, sizePlace, size, Offset() - start);
  if (isNext(Offset())) return;
  if (!isNext(end)) throw Unreadable{};
  Seek(end);
}

}  // namespace mapexport
