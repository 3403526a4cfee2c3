#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

/// With what a picture was taken, and when, as far as its file tells.
struct CameraFacts
{
    QDateTime taken;                   ///< by the camera's clock, in whatever zone that was: its own zone means nothing
    std::optional<int> secondsFromUtc; ///< of that clock
    QString camera;                    ///< maker and model
    QString lens;
    // 0 where unknown.
    double exposureTime = 0; ///< seconds
    double aperture = 0;     ///< the f-number
    int iso = 0;
    double focalLength = 0; ///< millimetres

    [[nodiscard]] bool operator==(const CameraFacts &) const = default;

    /// May take as long as the disk likes; any thread.
    [[nodiscard]] static CameraFacts ofFile(const QString &path);
};
