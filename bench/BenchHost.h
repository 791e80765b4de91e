// The exporter's host in benchmarks.
#pragma once

#include <string>

#include "exporter/plugin/ExportModel.h"
#include "support/TestSystem.h"

namespace mapexport {

/// The exporter in the state after its library was loaded. `folder` becomes the current folder; the
/// debug log and the output go there.
class BenchHost {
 public:
  explicit BenchHost(const std::string& folder);
  BenchHost(const BenchHost&) = delete;
  BenchHost& operator=(const BenchHost&) = delete;
  ~BenchHost();

  /// Makes `model` the running export's and resets everything else to the state before the first
  /// export.
  static void Begin(ExportModel& model);

 private:
  TestSystem system_;
  HINSTANCE module_;
};

}  // namespace mapexport
