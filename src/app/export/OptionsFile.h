// Options beside a scene, from the file mapexport.toml.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "cli/CommandLine.h"

namespace mapexport {

/// What a mapexport.toml says of one scene.
struct FileOptions {
  std::string path;  ///< of the file; empty when there is none
  GivenOptions options;
  std::map<std::string, std::size_t, std::less<>> lines;  ///< where each option is in the file
};

/// Where a mapexport.toml for `scene` may be: in its folder and those above, the nearest first.
/// None for a scene from a pipe.
std::vector<std::string> OptionsFilePlaces(const std::string& scene);

/// The first of them that exists; empty when none does, as far as the folders may be searched.
std::string FindOptionsFile(const std::string& scene);

/// Reads that file. docs/options-file.md
/// describes it. Its relative paths come out as paths to open. Options that don't shape the output,
/// and values that a command line of `command` would not take, are errors. Throws SceneError or
/// RunError with the line.
FileOptions ReadOptionsFile(const std::string& scene, const CommandInfo* command);

}  // namespace mapexport
