// What the reader's process has to say beside the scene.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/ConfineReader.h"
#include "importer/ImportRemark.h"

namespace mapexport {

struct ReaderMessage {
  ImportRemarks remarks;
  ImportRemarks leftOut;
  std::vector<std::string> sideFiles;
  Confinement confinement;
};

/// The message in a form of its own, for a process of the same program.
std::string ToBytes(const ReaderMessage& message);

/// The message of such bytes; nothing when they are not what ToBytes made.
std::optional<ReaderMessage> ReaderMessageOf(std::string_view bytes);

}  // namespace mapexport
