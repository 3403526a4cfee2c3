#pragma once

#include <QString>

struct CameraFacts;

// What is known of a shot, as people read it; empty where nothing is known.

/// By the camera's clock: "5/31/24 12:34 PM (UTC+02:00)".
[[nodiscard]] QString takenText(const CameraFacts &facts);
/// "1/250 s · f/2.8 · ISO 400 · 85 mm"
[[nodiscard]] QString exposureText(const CameraFacts &facts);
