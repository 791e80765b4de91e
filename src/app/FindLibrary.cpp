#include "app/FindLibrary.h"

#include <filesystem>

#include <fmt/format.h>

#include "system/RunError.h"

namespace mapexport {

std::string FindLibrary(const std::string& name) {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) {
    throw RunError(
        fmt::format("the program's own folder (/proc/self/exe): {}", ErrnoText(error.value())));
  }
  const std::filesystem::path beside = program.parent_path() / name;
  const std::filesystem::path installed = program.parent_path() / MAPEXPORT_LIBRARY_FOLDER / name;
  std::error_code none;
  return std::filesystem::exists(beside, none) || !std::filesystem::exists(installed, none)
             ? beside.string()
             : installed.lexically_normal().string();
}

}  // namespace mapexport
