#include "worker/ReaderMessage.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <set>
#include <utility>

#include <fmt/format.h>
#include <limits.h>

#include "importer/LimitRemarks.h"

namespace mapexport {
namespace {

// Ours are some dozens, and the terminal shows some remarks of each.
constexpr std::size_t kMostCodes = 64;
constexpr std::size_t kLongestCode = 64;

[[noreturn]] void FailDamaged() {
  throw BadReaderMessage("the reader crashed on it (its message is damaged)");
}

void PutNumber(std::string& bytes, std::uint64_t number) {
  char raw[sizeof number];
  std::memcpy(raw, &number, sizeof number);
  bytes.append(raw, sizeof number);
}

void PutText(std::string& bytes, std::string_view text) {
  PutNumber(bytes, text.size());
  bytes += text;
}

void PutRemarks(std::string& bytes, const ImportRemarks& remarks) {
  PutNumber(bytes, remarks.size());
  for (const ImportRemark& remark : remarks) {
    PutNumber(bytes, remark.kind == RemarkKind::kWarning ? 1 : 0);
    PutText(bytes, remark.code);
    PutText(bytes, remark.text);
    PutNumber(bytes, remark.count);
    PutNumber(bytes, remark.stands);
  }
}

/// Takes the parts off the front of bytes.
class Parts {
 public:
  explicit Parts(std::string_view bytes) : rest_(bytes) {}

  std::uint64_t Number() {
    std::uint64_t number = 0;
    std::memcpy(&number, Take(sizeof number).data(), sizeof number);
    return number;
  }
  std::string Text() { return std::string(Take(Number())); }
  void RequireEnd() const {
    if (!rest_.empty()) FailDamaged();
  }

 private:
  std::string_view Take(std::uint64_t size) {
    if (size > rest_.size()) FailDamaged();
    const std::string_view part = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return part;
  }

  std::string_view rest_;
};

ImportRemarks RemarksOf(Parts& parts) {
  ImportRemarks remarks;
  std::set<std::string> codes;
  const std::uint64_t count = parts.Number();
  if (count > kMostRemarks) FailDamaged();
  for (std::uint64_t i = 0; i < count; ++i) {
    ImportRemark& remark = remarks.emplace_back();
    remark.kind = parts.Number() == 0 ? RemarkKind::kNote : RemarkKind::kWarning;
    remark.code = parts.Text();
    remark.text = parts.Text();
    remark.count = parts.Number();
    remark.stands = std::clamp<std::uint64_t>(parts.Number(), 1, UINT32_MAX);  // to be added up
    codes.insert(remark.code);
    if (remark.code.size() > kLongestCode || codes.size() > kMostCodes) FailDamaged();
  }
  LimitRemarks(remarks);
  return remarks;
}

std::vector<std::string> SideFilesOf(Parts& parts) {
  std::vector<std::string> files;
  const std::uint64_t count = parts.Number();
  if (count > kMostSideFiles) {
    throw BadReaderMessage(fmt::format("is read from {} files, more than the {} that are allowed",
                                       count, kMostSideFiles));
  }
  for (std::uint64_t i = 0; i < count; ++i) {
    const std::string& file = files.emplace_back(parts.Text());
    const bool canBePath =
        !file.empty() && file.size() < PATH_MAX && file.find('\0') == std::string::npos;
    if (!canBePath) FailDamaged();
  }
  return files;
}

}  // namespace

std::string ToBytes(const ReaderMessage& message) {
  std::string bytes;
  PutRemarks(bytes, message.remarks);
  PutRemarks(bytes, message.leftOut);
  PutNumber(bytes, message.sideFiles.size());
  for (const std::string& file : message.sideFiles) PutText(bytes, file);
  return bytes;
}

ReaderMessage ReaderMessageOf(std::string_view bytes) {
  ReaderMessage message;
  Parts parts(bytes);
  message.remarks = RemarksOf(parts);
  message.leftOut = RemarksOf(parts);
  message.sideFiles = SideFilesOf(parts);
  parts.RequireEnd();
  return message;
}

std::string ToBytes(const Confinement& confinement) {
  std::string bytes;
  PutText(bytes, confinement.calls);
  PutText(bytes, confinement.files);
  PutText(bytes, confinement.capabilities);
  PutText(bytes, confinement.limits);
  PutNumber(bytes, confinement.timer ? 1 : 0);
  PutText(bytes, confinement.timer.value_or(std::string()));
  return bytes;
}

Confinement ConfinementOf(std::string_view bytes) {
  Confinement confinement;
  Parts parts(bytes);
  confinement.calls = parts.Text();
  confinement.files = parts.Text();
  confinement.capabilities = parts.Text();
  confinement.limits = parts.Text();
  const bool hasTimer = parts.Number() != 0;
  std::string timer = parts.Text();
  if (hasTimer) confinement.timer = std::move(timer);
  parts.RequireEnd();
  return confinement;
}

}  // namespace mapexport
