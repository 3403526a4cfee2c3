#pragma once

#include "pch-gui.h"

#include <QtWidgets>
