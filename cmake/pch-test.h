#pragma once

// The tests of the lowest folders see no QtGui.
#if __has_include(<QImage>)
#include "pch-gui.h"
#else
#include "pch-core.h"
#endif

#include <QTest>
