// The library's access to files, with a record of them.
#include "importer/SideFiles.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include <assimp/DefaultIOSystem.h>
#include <assimp/MemoryIOWrapper.h>

#include "importer/HostText.h"

namespace mapexport {
namespace {

/// What `name` may mean: the library opens the percent signs of URIs and the separators of Windows
/// as they stand.
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

class RecordingFiles : public Assimp::DefaultIOSystem {
 public:
  RecordingFiles(std::shared_ptr<FileRecord> record, std::shared_ptr<const ChangedFile> changed)
      : record_(std::move(record)), changed_(std::move(changed)) {}

  Assimp::IOStream* Open(const char* file, const char* mode) override {
    if (file == nullptr || !std::string_view(mode).starts_with('r')) {
      return DefaultIOSystem::Open(file, mode);
    }
    if (changed_ != nullptr && changed_->name == file) {
      return new Assimp::MemoryIOStream(
          reinterpret_cast<const std::uint8_t*>(changed_->text.data()), changed_->text.size());
    }
    for (const std::string& name : NamesOf(file)) {
      // A folder can be opened, too, but not read.
      if (std::error_code error; std::filesystem::is_directory(name, error)) continue;
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
