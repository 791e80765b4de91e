#include "app/export/ReportOutput.h"

#include <utility>

#include "app/WriteOutput.h"
#include "system/StandardOutput.h"

namespace mapexport {

ReportOutput::ReportOutput(std::optional<OutputTarget> target,
                           std::function<void(std::ostream&)> write)
    : target_(std::move(target)), write_(std::move(write)) {}

void ReportOutput::RequireFree(const TakenFiles& files) {
  std::optional<OutputTarget> target = std::exchange(target_, std::nullopt);
  if (target) files.RequireFree(*target);
  target_ = std::move(target);
}

std::unique_ptr<OutputPlace> ReportOutput::Prepare() const {
  if (!target_ || target_->isStandardOutput) return nullptr;
  return std::make_unique<OutputPlace>(*target_, write_);
}

void ReportOutput::Print() {
  if (!target_ || !target_->isStandardOutput) return;
  target_.reset();
  PrintResult(write_);
}

void ReportOutput::Deliver(Messages& messages) {
  Print();
  if (target_) WriteOutput(*target_, write_, messages);
}

}  // namespace mapexport
