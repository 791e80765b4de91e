// The host that the exporter runs in when it is measured.
#pragma once

#include <string>

#include "exporter/plugin/ExportModel.h"
#include "support/TestSystem.h"

namespace mapexport {

/// The exporter as it is once its library has been loaded. `folder` becomes the current one; the
/// debug log and the output go there.
class BenchHost {
 public:
  explicit BenchHost(const std::string& folder);
  BenchHost(const BenchHost&) = delete;
  BenchHost& operator=(const BenchHost&) = delete;
  ~BenchHost();

  /// Makes `model` the running export's, and everything else as before the first export.
  static void Begin(ExportModel& model);

 private:
  TestSystem system_;
  HINSTANCE module_;
};

}  // namespace mapexport
