// The one function of this library that can be seen from outside.
#pragma once

#include "console/Presenter.h"

extern "C" mapexport::CreatePresenterFunction CreatePresenter;
