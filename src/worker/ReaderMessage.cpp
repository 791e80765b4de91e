#include "worker/ReaderMessage.h"

#include <algorithm>
#include <cstdint>
#include <set>

#include <limits.h>

#include "importer/LimitRemarks.h"
#include "worker/HandOver.h"

namespace mapexport {
namespace {

// There are some dozens of codes, and the terminal shows some remarks of each.
constexpr std::size_t kMostCodes = 64;
constexpr std::size_t kLongestCode = 64;

void PutTexts(std::string& bytes, const std::vector<std::string>& texts) {
  PutNumber(bytes, texts.size());
  for (const std::string& text : texts) PutText(bytes, text);
}

void PutRemarks(std::string& bytes, const Remarks& remarks) {
  PutNumber(bytes, remarks.size());
  for (const Remark& remark : remarks) {
    PutNumber(bytes, remark.kind == RemarkKind::kWarning ? 1 : 0);
    PutText(bytes, remark.code);
    PutText(bytes, remark.text);
    PutNumber(bytes, remark.count);
    PutNumber(bytes, remark.stands);
    PutTexts(bytes, remark.nodes);
  }
}

Remarks RemarksOf(MessageParts& parts) {
  Remarks remarks;
  std::set<std::string> codes;
  std::size_t nodeBytes = 0;
  const std::uint64_t count = parts.Number();
  if (count > kMostRemarks) throw BadMessage();
  for (std::uint64_t i = 0; i < count; ++i) {
    Remark& remark = remarks.emplace_back();
    remark.kind = parts.Number() == 0 ? RemarkKind::kNote : RemarkKind::kWarning;
    remark.code = parts.Text();
    remark.text = parts.Text();
    remark.count = parts.Number();
    // Within 32 bits, so that a sum of them can't overflow.
    remark.stands = std::clamp<std::uint64_t>(parts.Number(), 1, UINT32_MAX);
    for (std::uint64_t nodes = parts.Number(); nodes > 0; --nodes) {
      nodeBytes += NodeBytes(remark.nodes.emplace_back(parts.Text()));
      if (nodeBytes > kMostNodeBytes) throw BadMessage();
    }
    codes.insert(remark.code);
    if (remark.code.size() > kLongestCode || codes.size() > kMostCodes) throw BadMessage();
  }
  LimitRemarks(remarks);
  return remarks;
}

std::vector<std::string> SideFilesOf(MessageParts& parts) {
  std::vector<std::string> files;
  const std::uint64_t count = parts.Number();
  if (count > kMostSideFiles) throw BadMessage();
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::string& file = files.emplace_back(parts.Text());
    const bool canBePath =
        !file.empty() && file.size() < PATH_MAX && file.find('\0') == std::string::npos;
    if (!canBePath) throw BadMessage();
  }
  return files;
}

}  // namespace

std::string ToBytes(const ReaderMessage& message) {
  std::string bytes;
  PutRemarks(bytes, message.remarks);
  PutRemarks(bytes, message.leftOut);
  PutTexts(bytes, message.sideFiles);
  return bytes;
}

ReaderMessage ReaderMessageOf(std::string_view bytes) {
  ReaderMessage message;
  MessageParts parts(bytes);
  message.remarks = RemarksOf(parts);
  message.leftOut = RemarksOf(parts);
  message.sideFiles = SideFilesOf(parts);
  parts.RequireEnd();
  return message;
}

}  // namespace mapexport
