// Reads a model file and checks it throughout.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "modelreader/ModelFile.h"
#include "modelreader/ModelLengths.h"
#include "modelreader/ModelProblem.h"

namespace mapexport {

struct ModelReadResult {
  ModelFile model;       ///< all that could be read; whole when the file is sound
  ModelLengths lengths;  ///< of what is in the model
  /// As they were found, errors and warnings mixed. Numbers that are not finite are one warning per
  /// kind of list. After 50 errors reading stops, and the last problem says so.
  std::vector<ModelProblem> problems;

  /// Whether there is no error.
  bool Sound() const;
};

/// Reads the file at `path`. A sound file is one that the exporter can have written: every size,
/// count and tag is right, no byte is left over, every index is in range, no batch is empty,
/// surface sets have known flags only, and the face table agrees with the batches, planes and
/// surface sets. An index into a list of more than kModelIndexLimit entries is compared by its 16
/// bits only. Memory is a small multiple of the file's size, time is linear in it. Throws nothing:
/// when there is not enough memory, that is the only problem.
ModelReadResult ReadModelFile(const std::string& path, ModelLayout layout);

/// The same for the bytes of a file, but throws std::bad_alloc.
ModelReadResult ReadModelBytes(std::span<const std::byte> bytes, ModelLayout layout);

/// Whether the first bytes of a file are those of a model file.
bool BeginsAsModel(std::span<const std::byte> beginning);

struct ModelCheckResult {
  ModelLengths lengths;
  std::vector<ModelProblem> problems;  ///< those that ReadModelFile finds
};

/// Checks the file at `path` as ReadModelFile does, but keeps nothing of it. Memory is little more
/// than the file's size.
ModelCheckResult CheckModelFile(const std::string& path, ModelLayout layout);

}  // namespace mapexport
