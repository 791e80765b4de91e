#include "exporter/base/StopWatch.h"

#include "exporter/base/DebugLog.h"
#include "host/System.h"

namespace mapexport {

void StopWatch::Start() {
  start_ = stop_ = TheSystem().timeGetTime();
}

void StopWatch::Stop() {
  stop_ = TheSystem().timeGetTime();
}

void StopWatch::Report(const char* label) const {
  DebugLog& log = DebugLog::Instance();
  log.Line() << label << " took " << stop_ - start_ << " msec.\n" << std::flush;
  log.Emit();
}

}  // namespace mapexport
