#include "app/FindLibrary.h"

#include <filesystem>

#include <fmt/format.h>
#include <sys/auxv.h>

#include "system/RunError.h"

namespace mapexport {

std::string FindLibrary(const std::string& name) {
  std::error_code error;
  std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  // Without /proc, the path by which the kernel found the program.
  const auto* const path = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
  if (error && path != nullptr) program = std::filesystem::canonical(path, error);
  if (error) throw RunError(fmt::format("the program's own folder: {}", ErrnoText(error.value())));
  const std::filesystem::path beside = program.parent_path() / name;
  const std::filesystem::path installed = program.parent_path() / MAPEXPORT_LIBRARY_FOLDER / name;
  std::error_code none;
  return std::filesystem::exists(beside, none) || !std::filesystem::exists(installed, none)
             ? beside.string()
             : installed.lexically_normal().string();
}

}  // namespace mapexport
