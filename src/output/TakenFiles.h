// Files that an output must not replace.
#pragma once

#include <map>
#include <string>

#include "output/OutputTarget.h"
#include "system/FileIdentity.h"

namespace mapexport {

/// What messages call a side file of a scene.
inline constexpr const char* kSideInput = "file that the scene is read from,";
/// And a mapexport.toml.
inline constexpr const char* kOptionsInput = "file of options";

/// The files that a run reads, and its other outputs. Files are compared by identity, not by name:
/// a link to an input is that input. Each file is examined once, when it is added.
class TakenFiles {
 public:
  /// `what` is the file's role in the run, such as "scene". A file that does not exist yet is
  /// identified by its folder and name.
  void Add(const std::string& path, const std::string& what);

  /// Adds those of another run; files that both have keep their roles.
  void AddAll(TakenFiles others) { files_.merge(others.files_); }

  /// The role of the file at `path`; empty when it is none of them.
  std::string WhatIs(const std::string& path) const;

  /// Throws RunError when writing to `target` would replace one of the files or write into it.
  void RequireFree(const OutputTarget& target) const;

 private:
  std::map<FileIdentity, std::string> files_;
};

}  // namespace mapexport
