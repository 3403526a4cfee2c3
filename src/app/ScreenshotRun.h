#pragma once

#include <QObject>
#include <QString>

class PIAppController;
class QTimer;

/// A run without anybody watching: once the opened files are in and their pictures are there, the window is written
/// to a file, the library is saved and the program ends. After ten minutes it does so anyway and tells of a failure.
class ScreenshotRun final : public QObject
{
    Q_OBJECT

public:
    ScreenshotRun(PIAppController &controller, const QString &path, QObject *parent = nullptr);

private:
    void look();
    void shoot(bool busy);

    PIAppController &m_controller;
    QString m_path;
    QTimer *m_timer;
    int m_quietLooks = 0;
    int m_looks = 0;
};
