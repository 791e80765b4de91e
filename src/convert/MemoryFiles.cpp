#include "convert/MemoryFiles.h"

#include <algorithm>
#include <string_view>

#include <assimp/IOStream.hpp>

namespace mapexport {

namespace {

class MemoryStream : public Assimp::IOStream {
 public:
  explicit MemoryStream(std::string& bytes) : bytes_(bytes) {}

  std::size_t Read(void*, std::size_t, std::size_t) override { return 0; }
  std::size_t Write(const void* data, std::size_t size, std::size_t count) override {
    const std::size_t length = size * count;
    if (position_ + length > bytes_.size()) bytes_.resize(position_ + length);
    std::copy_n(static_cast<const char*>(data), length, bytes_.begin() + Difference(position_));
    position_ += length;
    return count;
  }
  aiReturn Seek(std::size_t offset, aiOrigin origin) override {
    const std::size_t from = origin == aiOrigin_SET   ? 0
                             : origin == aiOrigin_CUR ? position_
                                                      : bytes_.size();
    position_ = from + offset;
    return aiReturn_SUCCESS;
  }
  std::size_t Tell() const override { return position_; }
  std::size_t FileSize() const override { return bytes_.size(); }
  void Flush() override {}

 private:
  static std::string::difference_type Difference(std::size_t offset) {
    return static_cast<std::string::difference_type>(offset);
  }

  std::string& bytes_;
  std::size_t position_ = 0;
};

}  // namespace

bool MemoryFiles::Exists(const char* file) const {
  return files_.contains(file);
}

Assimp::IOStream* MemoryFiles::Open(const char* file, const char* mode) {
  if (!std::string_view(mode).starts_with('w')) return nullptr;
  std::string& bytes = files_[file];
  bytes.clear();
  return new MemoryStream(bytes);
}

void MemoryFiles::Close(Assimp::IOStream* stream) {
  delete stream;
}

}  // namespace mapexport
