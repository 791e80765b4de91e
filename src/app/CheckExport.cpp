#include "app/CheckExport.h"

#include <algorithm>
#include <cerrno>
#include <ostream>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "system/Descriptor.h"
#include "system/FdOutput.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

/// Why nothing more can be written to the end of the file at `path`, empty when something can.
std::string WriteTrouble(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
  if (!file.IsOpen()) return ErrnoText(errno);
  FdOutput output(file.Get());
  std::ostream(&output) << std::string(65536, '\0');
  if (const int error = output.Finish(); error != 0) return ErrnoText(error);
  return fsync(file.Get()) == 0 ? "" : ErrnoText(errno);
}

}  // namespace

void ThrowNotExported(const std::string& output, const std::string& path,
                      const std::string& reason) {
  const std::string trouble = WriteTrouble(path);
  if (!trouble.empty()) throw RunError(fmt::format("{}: cannot be written: {}", output, trouble));
  throw RunError(fmt::format("{}: not exported: {}", output, reason));
}

ModelCheckResult CheckExport(const std::string& output, const std::string& path) {
  ModelCheckResult checked = CheckModelFile(path, reader::LayoutOfName(output));
  const auto error =
      std::ranges::find(checked.problems, ModelSeverity::kError, &ModelProblem::severity);
  if (error != checked.problems.end()) ThrowNotExported(output, path, ToLine(*error));
  return checked;
}

}  // namespace mapexport
