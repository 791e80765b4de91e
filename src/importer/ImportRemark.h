// What the importer has to say about a scene that it could read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace mapexport {

enum class RemarkKind { kNote, kWarning };

struct ImportRemark {
  RemarkKind kind = RemarkKind::kWarning;
  std::string code;         ///< a short stable word in kebab-case, for programs
  std::string text;         ///< one line, without a "warning" prefix and without the file's name
  std::uint64_t count = 1;  ///< how many things it is about
};

using ImportRemarks = std::vector<ImportRemark>;

}  // namespace mapexport
