// The library's access to files, with a record of the ones that it didn't find.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace Assimp {
class IOSystem;
}

namespace mapexport {

/// Names of files that could not be opened, as the reader asked for them, in the order of asking.
class MissingFiles {
 public:
  void Add(const std::string& name);
  const std::vector<std::string>& Names() const { return names_; }

 private:
  std::vector<std::string> names_;
  std::set<std::string> known_;
};

/// File access that tells `missing` of each file that can't be opened for reading.
std::unique_ptr<Assimp::IOSystem> MakeRecordingFiles(std::shared_ptr<MissingFiles> missing);

}  // namespace mapexport
