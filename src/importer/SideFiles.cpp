#include "importer/SideFiles.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include <assimp/DefaultIOSystem.h>
#include <assimp/MemoryIOWrapper.h>

#include "importer/text/HostText.h"

namespace mapexport {
namespace {

/// The files that `name` may mean: the library decodes neither the percent signs of URIs nor the
/// separators of Windows.
std::vector<std::string> NamesOf(const std::string& name) {
  std::vector<std::string> names{name};
  if (std::string decoded = DecodePercents(name); decoded != name) {
    names.push_back(std::move(decoded));
  }
  std::string slashed = name;
  std::ranges::replace(slashed, '\\', '/');
  if (slashed != name) names.push_back(std::move(slashed));
  return names;
}

/// Opening a folder would succeed, but reading it fails; a pipe would block, a device may have no
/// end.
bool IsReadable(const std::string& name) {
  std::error_code error;
  return std::filesystem::is_regular_file(name, error);
}

class RecordingFiles : public Assimp::DefaultIOSystem {
 public:
  RecordingFiles(std::shared_ptr<FileRecord> record, std::shared_ptr<const ChangedFile> changed)
      : record_(std::move(record)), changed_(std::move(changed)) {}

  bool Exists(const char* file) const override { return file != nullptr && IsReadable(file); }

  Assimp::IOStream* Open(const char* file, const char* mode) override {
    // Reading a scene must write nothing.
    if (file == nullptr || mode == nullptr || *mode != 'r' || std::strchr(mode, '+') != nullptr) {
      return nullptr;
    }
    if (changed_ != nullptr && changed_->name == file) {
      return new Assimp::MemoryIOStream(
          reinterpret_cast<const std::uint8_t*>(changed_->text.data()), changed_->text.size());
    }
    for (const std::string& name : NamesOf(file)) {
      if (!IsReadable(name)) continue;
      if (Assimp::IOStream* const stream = DefaultIOSystem::Open(name.c_str(), mode)) {
        record_->Add(name, true);
        return stream;
      }
    }
    record_->Add(file, false);
    return nullptr;
  }

 private:
  std::shared_ptr<FileRecord> record_;
  std::shared_ptr<const ChangedFile> changed_;
};

}  // namespace

void FileRecord::Add(const std::string& name, bool isOpened) {
  if (known_.insert(name).second) (isOpened ? opened_ : missing_).push_back(name);
}

std::unique_ptr<Assimp::IOSystem> MakeRecordingFiles(std::shared_ptr<FileRecord> record,
                                                     std::shared_ptr<const ChangedFile> changed) {
  return std::make_unique<RecordingFiles>(std::move(record), std::move(changed));
}

}  // namespace mapexport
