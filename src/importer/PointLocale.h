// Numbers with a decimal point, whatever the host's language.
#pragma once

#include <new>

#include <locale.h>

namespace mapexport {

/// While it lives, this thread's C library reads and writes numbers as in C. The import library's
/// readers of XML would else take "0.5" for 0 in a process that speaks a language of decimal
/// commas.
class PointLocale {
 public:
  PointLocale() : own_(newlocale(LC_ALL_MASK, "C", locale_t{})), old_(uselocale(own_)) {
    if (own_ == locale_t{}) throw std::bad_alloc();
  }
  ~PointLocale() {
    uselocale(old_);
    freelocale(own_);
  }
  PointLocale(const PointLocale&) = delete;
  PointLocale& operator=(const PointLocale&) = delete;

 private:
  locale_t own_;
  locale_t old_;
};

}  // namespace mapexport
