// Where the report of a run goes.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <ostream>

#include "app/Messages.h"
#include "output/OutputPlace.h"
#include "output/OutputTarget.h"
#include "output/TakenFiles.h"

namespace mapexport {

/// A report that is put in place with the run's other outputs, or alone when the run fails. On
/// standard output it is printed once.
class ReportOutput {
 public:
  /// `write` writes the report in its state at that time. Without a target there is no report.
  ReportOutput(std::optional<OutputTarget> target, std::function<void(std::ostream&)> write);

  /// Throws RunError when the report would replace one of `files` or be written into it. The report
  /// is then never delivered.
  void RequireFree(const TakenFiles& files);

  const std::optional<OutputTarget>& Target() const { return target_; }

  /// The report as a file to be put in place; null when it is not a file. Throws RunError.
  std::unique_ptr<OutputPlace> Prepare() const;
  /// Prints the report if it goes to standard output. A closed reader is not an error. Throws
  /// RunError.
  void Print();
  /// Prints the report, or puts it in place alone. Throws RunError.
  void Deliver(Messages& messages);

 private:
  std::optional<OutputTarget> target_;
  std::function<void(std::ostream&)> write_;
};

}  // namespace mapexport
