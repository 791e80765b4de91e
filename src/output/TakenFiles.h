// Files that an output must not take the place of.
#pragma once

#include <map>
#include <string>

#include "output/OutputTarget.h"
#include "system/FileIdentity.h"

namespace mapexport {

/// What the side file of a scene is to a run.
inline constexpr const char* kSideInput = "file that the scene is read from,";

/// What a run reads, and its other outputs. Files are told by what they are, not by their names: a
/// link to an input is that input. Each is asked for once, when it is added.
class TakenFiles {
 public:
  /// `what` says what the file is to the run: "scene". One that is not there yet is known by its
  /// folder and name.
  void Add(const std::string& path, const std::string& what);

  /// What the file at `path` is, empty when it is none of them.
  std::string WhatIs(const std::string& path) const;

  /// Throws RunError when writing to `target` would replace one of them, or write into it.
  void RequireFree(const OutputTarget& target) const;

 private:
  std::map<FileIdentity, std::string> files_;
};

}  // namespace mapexport
