#include "modelreader/SizedRecord.h"

#include "modelreader/PrintableText.h"

namespace mapexport {

void ReadSizedRecord(ByteReader& in, const Place& place, const std::function<void()>& header,
                     const std::function<void()>& body,
                     const std::function<bool(std::uint64_t offset)>& isNext) {
  const Place sizePlace(place, "size");
  const std::uint64_t sizeOffset = in.Offset();
  const std::uint32_t size = in.U32(sizePlace);
  header();

  const std::uint64_t start = in.Offset();
  const bool fits = size <= in.Left();
  if (!fits && !in.EndCuts()) {
    in.Problems().Add(ModelProblemCode::kSizeTooLarge, sizeOffset, sizePlace, size, in.Left(),
                      in.WhatEnds());
  }
  const std::uint64_t end = fits ? start + size : in.End();
  try {
    const ByteReader::Scope scope(in, {.end = end, .what = &place, .cuts = !fits});
    body();
  } catch (const Unreadable&) {
    if (!fits || !isNext(end)) throw;
    in.Seek(end);
    return;
  }

  if (!fits || in.Offset() == end) return;
  in.Problems().Add(ModelProblemCode::kSizeLeftOver, sizeOffset, sizePlace, size,
                    in.Offset() - start);
  if (isNext(in.Offset())) return;
  if (!isNext(end)) throw Unreadable{};
  in.Seek(end);
}

ModelHeader ReadHeader(ByteReader& in, const Place& place, std::uint32_t typeCode,
                       std::uint32_t version) {
  ModelHeader header;
  ProblemList& problems = in.Problems();

  std::uint64_t offset = in.Offset();
  const Place typePlace(place, "typeCode");
  header.typeCode = in.U32(typePlace);
  if (header.typeCode != typeCode) {
    problems.Add(ModelProblemCode::kTypeCode, offset, typePlace, header.typeCode, typeCode);
  }

  offset = in.Offset();
  const Place textPlace(place, "versionText");
  const std::string text = in.Text(textPlace);
  if (text != kVersionText) {
    problems.Add(ModelProblemCode::kVersionText, offset, textPlace, Quoted(text),
                 Quoted(kVersionText));
  }

  offset = in.Offset();
  const Place versionPlace(place, "version");
  header.version = in.U32(versionPlace);
  if (header.version != version) {
    problems.Add(ModelProblemCode::kVersion, offset, versionPlace, header.version, version);
  }
  header.name = in.Text(Place(place, "name"));
  return header;
}

bool RecordStandsAt(const ByteReader& in, std::uint64_t offset, std::uint32_t typeCode) {
  constexpr std::uint64_t kFieldBytes = 4;
  return in.StandsAt(offset + kFieldBytes, typeCode) &&
         in.StandsAt(offset + 2 * kFieldBytes, kVersionText);
}

}  // namespace mapexport
