#include "app/ReaderMessage.h"

#include <cstdint>
#include <cstring>

namespace mapexport {
namespace {

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
  }
}

/// Takes the parts off the front of bytes. After the first that is not there, all are empty.
class Parts {
 public:
  explicit Parts(std::string_view bytes) : rest_(bytes) {}

  std::uint64_t Number() {
    std::uint64_t number = 0;
    const std::string_view raw = Take(sizeof number);
    if (sound_) std::memcpy(&number, raw.data(), sizeof number);
    return number;
  }
  std::string Text() { return std::string(Take(Number())); }

  bool Sound() const { return sound_; }
  bool AtEnd() const { return sound_ && rest_.empty(); }

 private:
  std::string_view Take(std::uint64_t size) {
    sound_ = sound_ && size <= rest_.size();
    if (!sound_) return {};
    const std::string_view part = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return part;
  }

  std::string_view rest_;
  bool sound_ = true;
};

ImportRemarks RemarksOf(Parts& parts) {
  ImportRemarks remarks;
  const std::uint64_t count = parts.Number();
  for (std::uint64_t i = 0; i < count && parts.Sound(); ++i) {
    ImportRemark& remark = remarks.emplace_back();
    remark.kind = parts.Number() == 0 ? RemarkKind::kNote : RemarkKind::kWarning;
    remark.code = parts.Text();
    remark.text = parts.Text();
    remark.count = parts.Number();
  }
  return remarks;
}

}  // namespace

std::string ToBytes(const ReaderMessage& message) {
  std::string bytes;
  PutRemarks(bytes, message.remarks);
  PutRemarks(bytes, message.leftOut);
  PutNumber(bytes, message.sideFiles.size());
  for (const std::string& file : message.sideFiles) PutText(bytes, file);
  PutText(bytes, message.confinement.calls);
  PutText(bytes, message.confinement.files);
  PutText(bytes, message.confinement.capabilities);
  return bytes;
}

std::optional<ReaderMessage> ReaderMessageOf(std::string_view bytes) {
  ReaderMessage message;
  Parts parts(bytes);
  message.remarks = RemarksOf(parts);
  message.leftOut = RemarksOf(parts);
  const std::uint64_t files = parts.Number();
  for (std::uint64_t i = 0; i < files && parts.Sound(); ++i) {
    message.sideFiles.push_back(parts.Text());
  }
  message.confinement.calls = parts.Text();
  message.confinement.files = parts.Text();
  message.confinement.capabilities = parts.Text();
  if (!parts.AtEnd()) return std::nullopt;
  return message;
}

}  // namespace mapexport
