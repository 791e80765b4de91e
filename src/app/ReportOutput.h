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

/// A report that is placed with the run's other outputs, or delivered alone when the run fails. On
/// standard output it is printed once.
class ReportOutput {
 public:
  /// `write` writes the report as it is by then. Without a target there is none.
  ReportOutput(std::optional<OutputTarget> target, std::function<void(std::ostream&)> write);

  /// Throws RunError when the report would replace one of `files` or be written into it. It is not
  /// delivered then.
  void RequireFree(const TakenFiles& files);

  const std::optional<OutputTarget>& Target() const { return target_; }

  /// The report as a file that is to be put in its place; null when it is to be none. Throws
  /// RunError.
  std::unique_ptr<OutputPlace> Prepare() const;
  /// Prints the report if it goes to standard output. A reader that has gone away wants no more of
  /// it. Throws RunError.
  void Print();
  /// Prints the report or puts it in its place alone. Throws RunError.
  void Deliver(Messages& messages);

 private:
  std::optional<OutputTarget> target_;
  std::function<void(std::ostream&)> write_;
};

}  // namespace mapexport
