#include "DateSort.h"

#include "FileNotifications.h"
#include "LibraryEditor.h"
#include "LibraryView.h"
#include "PIFolder.h"
#include "PhotoLibrary.h"

#include <QProgressDialog>

#include <utility>

DateSort::DateSort(LibraryEditor &editor, QWidget &window, std::function<void()> sort, QObject *parent)
    : QObject(parent)
    , m_editor(editor)
    , m_window(window)
    , m_sort(std::move(sort))
    , m_factsObserver(
          editor.library().notifications().observe(kFileFactsNotification, [this](const NotificationObject &object) {
              if (const auto *file = object.as<PIFileRef>())
                  take(*file);
          }))
{}

DateSort::~DateSort() = default;

void DateSort::start()
{
    stop();
    const auto folder = m_editor.view().shownFolder();
    if (!folder)
        return;
    QList<std::shared_ptr<PIFileRef>> undated;
    for (const auto &photo : std::as_const(*folder).photos()) {
        if (!photo->isFileLost() && photo->fileRef()->knownCreationTime() == 0)
            undated.append(photo->fileRef());
    }
    for (const auto &file : std::as_const(undated))
        m_undated.insert(file.get());
    if (m_undated.isEmpty())
        return m_sort();
    m_folder = folder;
    m_total = m_undated.size();
    m_progress = makeProgressDialog(tr("Sort by Date"), tr("Reading the dates of the files…"), m_window);
    m_progress->setWindowModality(Qt::WindowModal);
    connect(m_progress.get(), &QProgressDialog::canceled, this, &DateSort::stop);
    m_editor.library().fileFacts().want(undated);
}

void DateSort::take(const PIFileRef &file)
{
    if (!m_undated.remove(&file))
        return;
    if (m_undated.isEmpty())
        finish();
    else
        m_progress->setLabelText(
            tr("Reading the dates of the files… %L1 of %L2").arg(m_total - m_undated.size()).arg(m_total));
}

void DateSort::finish()
{
    const auto asked = m_folder.lock();
    stop();
    if (asked && asked == m_editor.view().shownFolder())
        m_sort();
}

void DateSort::stop()
{
    m_undated.clear();
    m_folder.reset();
    m_progress.reset();
}
