// The library's access to files, with a record of the ones that it didn't find.
#include "importer/SideFiles.h"

#include <string_view>
#include <utility>

#include <assimp/DefaultIOSystem.h>

namespace mapexport {
namespace {

class RecordingFiles : public Assimp::DefaultIOSystem {
 public:
  explicit RecordingFiles(std::shared_ptr<MissingFiles> missing) : missing_(std::move(missing)) {}

  Assimp::IOStream* Open(const char* file, const char* mode) override {
    Assimp::IOStream* stream = DefaultIOSystem::Open(file, mode);
    if (stream == nullptr && file != nullptr && std::string_view(mode).starts_with('r')) {
      missing_->Add(file);
    }
    return stream;
  }

 private:
  std::shared_ptr<MissingFiles> missing_;
};

}  // namespace

void MissingFiles::Add(const std::string& name) {
  if (known_.insert(name).second) names_.push_back(name);
}

std::unique_ptr<Assimp::IOSystem> MakeRecordingFiles(std::shared_ptr<MissingFiles> missing) {
  return std::make_unique<RecordingFiles>(std::move(missing));
}

}  // namespace mapexport
