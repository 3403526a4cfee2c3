#pragma once

#include "DispatchQueue.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <memory>

class PIFileRef;
class QFormLayout;
class QLabel;
struct CameraFacts;

/// The rows of the file section that tell what the file knows of its shot: when, with what and how it was taken. They
/// are read on a worker, and only those that tell something show.
class CameraRows final : public QObject
{
    Q_OBJECT

public:
    /// Adds the rows at the end of `form`, which stands in `section`.
    CameraRows(QFormLayout &form, QWidget &section);

    /// Shows those of a file that is there; null: none. Reads them unless they are those on show. Until they are known
    /// the rows keep their places, so that going on to the next photo of a camera moves nothing.
    void show(const std::shared_ptr<PIFileRef> &file);

private:
    enum Row { Taken, Camera, Lens, Exposure, Count };

    void addRow(Row row, const QString &title);
    void read(const QString &path);
    void take(const CameraFacts &facts);
    void setText(Row row, const QString &text);

    QFormLayout &m_form;
    QWidget &m_section;
    QLabel *m_texts[Count] = {};
    QString m_titles[Count];
    QString m_shownFile;    ///< its guid
    quint32 m_factsAge = 0; ///< that of the file when it was read
    std::shared_ptr<std::atomic<quint64>> m_newest = std::make_shared<std::atomic<quint64>>(0); ///< reading
    DispatchQueue m_worker;
};
