#include "app/BuiltIn.h"

#include <filesystem>
#include <system_error>

#include <CLI/Version.hpp>
#include <assimp/version.h>
#include <draco/core/draco_version.h>
#include <fmt/format.h>
#include <meshoptimizer.h>
#include <nettle/version.h>
#include <png.h>
#include <pugixml.hpp>
#include <seccomp.h>
#include <simdjson.h>
#include <toml++/toml.h>

#include "app/FindLibrary.h"
#include "view/WritePage.h"

namespace mapexport {
namespace {

std::string SeccompVersion() {
  const scmp_version* const version = seccomp_version();
  return fmt::format("{}.{}.{}", version->major, version->minor, version->micro);
}

const char* BuiltInOrNot(bool isThere) {
  return isThere ? "yes" : "not built in";
}

}  // namespace

std::string LibraryVersions() {
  constexpr int kFmtMajor = 10'000;  // 90100 is 9.1.0
  constexpr int kPart = 100;
  constexpr int kPugixmlMajor = 1000;  // 1130 is 1.13
  constexpr int kMeshoptMajor = 1000;  // 180 is 0.18
  return fmt::format(
      "assimp {}.{}.{}, CLI11 {}, draco {}, fmt {}.{}.{}, libpng {}, meshoptimizer {}.{}, "
      "nettle {}.{}, "
      "pugixml {}.{}, seccomp {}, simdjson {}.{}.{}, toml++ {}.{}.{}",
      aiGetVersionMajor(), aiGetVersionMinor(), aiGetVersionPatch(), CLI11_VERSION,
      draco::kDracoVersion, FMT_VERSION / kFmtMajor, FMT_VERSION / kPart % kPart,
      FMT_VERSION % kPart, PNG_LIBPNG_VER_STRING, MESHOPTIMIZER_VERSION / kMeshoptMajor,
      MESHOPTIMIZER_VERSION % kMeshoptMajor / 10, nettle_version_major(), nettle_version_minor(),
      PUGIXML_VERSION / kPugixmlMajor, PUGIXML_VERSION % kPugixmlMajor / 10, SeccompVersion(),
      int{simdjson::SIMDJSON_VERSION_MAJOR}, int{simdjson::SIMDJSON_VERSION_MINOR},
      int{simdjson::SIMDJSON_VERSION_REVISION}, TOML_LIB_MAJOR, TOML_LIB_MINOR, TOML_LIB_PATCH);
}

std::string BuiltInText() {
  std::error_code error;
  const bool hasWindows = std::filesystem::exists(FindLibrary("mapexport-window.so"), error);
  return fmt::format(
      "  windows of --dialog  {}\n  page of view         {}\n  libraries            {}\n",
      BuiltInOrNot(hasWindows), BuiltInOrNot(CanWritePage()), LibraryVersions());
}

}  // namespace mapexport
