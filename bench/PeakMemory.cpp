#include "PeakMemory.h"

#include <QFile>

double peakMegabytes(const QString &process)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(process));
    if (!status.open(QFile::ReadOnly))
        return 0;
    const QByteArray text = status.readAll();
    const qsizetype note = text.indexOf("VmHWM:");
    return note < 0 ? 0 : text.mid(note + 6).simplified().split(' ').first().toDouble() / 1024;
}

void clearPeak()
{
    QFile file(QStringLiteral("/proc/self/clear_refs"));
    if (file.open(QFile::WriteOnly))
        file.write("5");
}
