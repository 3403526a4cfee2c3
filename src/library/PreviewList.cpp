#include "PreviewList.h"

#include "PIPhoto.h"
#include "StringUtilities.h"

#include <QCoreApplication>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("PreviewList", text);
}

}

PreviewList::PreviewList(const PIGroup::PhotoList &photos, const QString &folderName)
    : m_photos(photos)
    , m_folderName(folderName)
{}

std::shared_ptr<PIPhoto> PreviewList::photo() const
{
    return m_photos.value(m_currentIndex);
}

void PreviewList::showPhoto(qsizetype index)
{
    if (index >= 0 && index < count())
        m_currentIndex = index;
}

bool PreviewList::step(qsizetype by)
{
    if (m_photos.isEmpty())
        return false;
    m_direction = by;
    m_currentIndex = (m_currentIndex + by + count()) % count();
    return true;
}

bool PreviewList::moveLeft()
{
    return step(-1);
}

bool PreviewList::moveRight()
{
    return step(1);
}

bool PreviewList::moveToBeginning()
{
    showPhoto(0);
    m_direction = 1;
    return !m_photos.isEmpty();
}

bool PreviewList::moveToEnd()
{
    showPhoto(count() - 1);
    m_direction = -1;
    return !m_photos.isEmpty();
}

QString PreviewList::title() const
{
    const auto shown = photo();
    const QString path = shown && shown->fileRef() ? shown->fileRef()->path() : QString();
    const QString name = QVString::fileNameMinusExtension(path);
    const qsizetype position = m_photos.indexOf(shown) + 1;
    return tr("%1  —  %2  —  %3 of %4")
        .arg(m_folderName, shown && shown->isMarked() ? tr("✽ %1 ✽").arg(name) : name, QString::number(position),
             QString::number(count()));
}

PIGroup::PhotoList PreviewList::ahead() const
{
    PIGroup::PhotoList photos;
    for (const qsizetype by : {m_direction, -m_direction, 2 * m_direction}) {
        const auto &photo = m_photos.value((m_currentIndex + by + 2 * count()) % std::max<qsizetype>(count(), 1));
        if (photo && photo != this->photo() && !photos.contains(photo))
            photos << photo;
    }
    return photos;
}
