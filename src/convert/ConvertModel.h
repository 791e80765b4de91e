// Converts a model file to a format that other programs open.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "convert/LegalValues.h"
#include "convert/TargetFormat.h"
#include "convert/TargetSpace.h"
#include "modelreader/ModelFile.h"

namespace mapexport {

struct ConvertedFile {
  std::string name;
  std::string bytes;
};

struct ConvertedModel {
  std::vector<ConvertedFile> files;  ///< the main file last, after the side file that it names
  Changes changes;
};

/// what() says in one line why a model can't be converted.
class ConvertError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Converts a valid model to the files of `format`; the main file is named `fileName`, which has no
/// folder. `hostUnits` is the number of host units per unit of the files. Throws ConvertError.
ConvertedModel ConvertModel(const ModelFile& model, const std::string& fileName,
                            const TargetFormat& format, const ExportedSpace& exported,
                            double hostUnits);

}  // namespace mapexport
