#include "window/CreatePresenter.h"

#include "window/WindowPresenter.h"

extern "C" mapexport::Presenter* CreatePresenter(unsigned version, const char* title) {
  if (version != mapexport::kPresenterVersion) return nullptr;
  return new mapexport::WindowPresenter(title);
}
