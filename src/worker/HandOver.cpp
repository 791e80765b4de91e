#include "worker/HandOver.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ostream>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "system/FdOutput.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

// A child that was taken over chooses the text of its error. Real ones name a file or two.
constexpr std::size_t kLongestError = 8192;

// The seals that make a memory file unchangeable.
constexpr int kSealed = F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;

[[noreturn]] void FailToMakeFile() {
  throw ChildError("no memory file can be made: " + ErrnoText(errno));
}

Descriptor MakeMemoryFile(const char* name) {
  Descriptor file(memfd_create(name, MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (!file.IsOpen()) FailToMakeFile();
  return file;
}

void Seal(const Descriptor& file) {
  if (fcntl(file.Get(), F_ADD_SEALS, kSealed) != 0) throw ChildError(ErrnoText(errno));
}

void Write(const Descriptor& file, std::string_view bytes) {
  FdOutput output(file.Get());
  std::ostream(&output) << bytes;
  if (const int error = output.Finish()) throw ChildError(ErrnoText(error));
}

}  // namespace

HandOverFiles::HandOverFiles(bool confined)
    : output_(MakeMemoryFile("output")), message_(MakeMemoryFile("message")) {
  if (!confined) return;
  confinement_ = MakeMemoryFile("confinement");
  // Only written pages take memory.
  if (ftruncate(message_.Get(), static_cast<off_t>(kLongestMessage)) != 0 ||
      fcntl(message_.Get(), F_ADD_SEALS, F_SEAL_GROW | F_SEAL_SHRINK | F_SEAL_SEAL) != 0) {
    FailToMakeFile();
  }
}

std::vector<int> HandOverFiles::Numbers() const {
  return {confinement_.Get(), output_.Get(), message_.Get()};
}

void HandOverFiles::WriteConfinement(const Confinement& confinement) const {
  std::string bytes;
  PutText(bytes, confinement.calls);
  PutText(bytes, confinement.files);
  PutText(bytes, confinement.capabilities);
  PutText(bytes, confinement.limits);
  PutNumber(bytes, confinement.timer ? 1 : 0);
  PutText(bytes, confinement.timer.value_or(std::string()));
  Write(confinement_, bytes);
  Seal(confinement_);
}

void HandOverFiles::SealOutput() const {
  Seal(output_);
}

void HandOverFiles::WriteMessage(std::string_view message) const {
  if (message.size() > kLongestMessage) throw ChildError(ErrnoText(EMSGSIZE));
  lseek(message_.Get(), 0, SEEK_SET);  // part of one may have been written
  Write(message_, message);
}

std::string HandOverFiles::ReadMessage(std::uint64_t most) const {
  const off_t end = lseek(message_.Get(), 0, SEEK_CUR);
  const auto size =
      std::min({static_cast<std::uint64_t>(std::max<off_t>(end, 0)), most, kLongestMessage});
  std::string message = BytesOf(message_, 0, size);
  return message.size() == size ? message : std::string();
}

std::string HandOverFiles::ReadError() const {
  std::string text = ReadMessage(kLongestError + 1);
  if (text.size() > kLongestError) text.replace(kLongestError, 1, "...");
  return text;
}

std::optional<Confinement> HandOverFiles::ReadConfinement() const {
  const int seals = fcntl(confinement_.Get(), F_GET_SEALS);
  if (seals < 0 || (seals & kSealed) != kSealed) return std::nullopt;
  const std::string bytes = BytesOf(confinement_, 0, kLongestMessage);
  MessageParts parts(bytes);
  Confinement confinement;
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

std::string BytesOf(const Descriptor& file, std::uint64_t at, std::uint64_t most) {
  struct stat info {};
  if (fstat(file.Get(), &info) != 0) return {};
  const auto size = static_cast<std::uint64_t>(info.st_size);
  std::string bytes(at < size ? std::min(most, size - at) : 0, '\0');
  const ssize_t got = ReadUpTo(file.Get(), bytes.data(), bytes.size(), at);
  bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
  return bytes;
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

std::uint64_t MessageParts::Number() {
  std::uint64_t number = 0;
  std::memcpy(&number, Take(sizeof number).data(), sizeof number);
  return number;
}

std::string MessageParts::Text() {
  return std::string(Take(Number()));
}

void MessageParts::RequireEnd() const {
  if (!rest_.empty()) throw BadMessage();
}

std::string_view MessageParts::Take(std::uint64_t size) {
  if (size > rest_.size()) throw BadMessage();
  const std::string_view part = rest_.substr(0, size);
  rest_.remove_prefix(size);
  return part;
}

}  // namespace mapexport
