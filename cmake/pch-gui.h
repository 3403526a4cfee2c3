#pragma once

#include "pch-core.h"

#include <QImage>
