#include "EffectSession.h"

#include "LibraryEditor.h"
#include "LibraryNotifications.h"
#include "PIPhoto.h"
#include "PhotoLibrary.h"
#include "StringUtilities.h"

EffectSession::EffectSession(LibraryEditor &editor, const FilterCatalogue &catalogue, std::shared_ptr<PIPhoto> photo,
                             EffectDelegate &delegate)
    : m_editor(editor)
    , m_catalogue(catalogue)
    , m_delegate(delegate)
    , m_originalPhoto(std::move(photo))
    , m_workingPhoto(m_originalPhoto->copy())
    , m_edits(catalogue, delegate)
{
    m_workingPhoto->setGuid(QVString::guidString());
    m_edits.setPhoto(m_workingPhoto);
}

qsizetype EffectSession::currentIndex() const
{
    const EffectChain &chain = m_workingPhoto->filterDicts();
    qsizetype index = m_currentFilter.isEmpty() ? -1 : chain.size() - 1;
    while (index >= 0 && chain.at(index).filterName() != m_currentFilter)
        --index;
    return index;
}

const EffectEntry *EffectSession::currentEntry() const
{
    const qsizetype index = currentIndex();
    return index < 0 ? nullptr : &m_workingPhoto->filterDicts().at(index);
}

bool EffectSession::takeCurrentOut()
{
    const qsizetype index = currentIndex();
    if (index < 0)
        return false;
    EffectChain chain = m_workingPhoto->filterDicts();
    chain.removeAt(index);
    m_workingPhoto->setFilterDicts(chain);
    return true;
}

void EffectSession::select(const QString &filterName)
{
    const bool endsTrial = m_provisionalAdd && takeCurrentOut();
    m_currentFilter = filterName;
    m_provisionalAdd = !filterName.isEmpty() && !currentEntry();
    // What hears of the addition finds that it is a trial.
    if (m_provisionalAdd)
        m_provisionalAdd = m_edits.addFilterToPhoto(m_catalogue.tagForFilter(filterName), EffectEdits::ShowError::No);
    if (endsTrial && !m_provisionalAdd)
        m_delegate.updatePhotoForFilterSet();
}

void EffectSession::addFilter()
{
    m_provisionalAdd = false;
    m_delegate.updatePhotoForFilterSet();
}

void EffectSession::removeFilter()
{
    if (!takeCurrentOut())
        return;
    m_currentFilter.clear();
    m_provisionalAdd = false;
    m_delegate.updatePhotoForFilterSet();
}

bool EffectSession::setEffects()
{
    if (m_originalPhoto->filterDicts() == m_workingPhoto->filterDicts())
        return true;
    if (!m_editor.recorder().setUndoAction(UndoAction::Photo, UndoName::Effects,
                                           {.container = {}, .photo = m_originalPhoto}))
        return false;
    m_originalPhoto->setFilterDicts(m_workingPhoto->filterDicts());
    m_editor.library().pictureChanged(*m_originalPhoto);
    NotificationCenter &center = m_editor.library().notifications();
    center.post(kNormalizeNotification);
    center.post(kPhotoNotification, m_originalPhoto);
    center.post(kSelectNotification, m_originalPhoto);
    return true;
}
