#pragma once

#include "MakeProgressDialog.h"
#include "NotificationCenter.h"

#include <QObject>
#include <QSet>

#include <functional>
#include <memory>

class LibraryEditor;
class PIFileRef;
class PIFolder;
class QWidget;

/// Sorting by date, for which the dates of all files must be known. Those that are not are read in the background
/// first, which can be cancelled: a disk that does not answer holds up such sorting alone.
class DateSort final : public QObject
{
    Q_OBJECT

public:
    /// `sort` sorts the folder on show by what is known. `editor` and `window` outlive this.
    DateSort(LibraryEditor &editor, QWidget &window, std::function<void()> sort, QObject *parent);
    ~DateSort() override;

    /// Sorts the folder on show, unless another one is shown by the time when the dates are known.
    void start();

private:
    void take(const PIFileRef &file);
    void finish();
    void stop();

    LibraryEditor &m_editor;
    QWidget &m_window;
    std::function<void()> m_sort;
    std::weak_ptr<PIFolder> m_folder;
    QSet<const PIFileRef *> m_undated; ///< not answered yet; references stay
    qsizetype m_total = 0;
    ProgressDialogPointer m_progress;
    NotificationCenter::Observer m_factsObserver;
};
