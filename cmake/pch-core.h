#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
