#include "PIDetailController.h"

#include "CollapsibleSection.h"
#include "DetailPane.h"
#include "LibraryEditor.h"
#include "LibraryNotifications.h"
#include "LibraryView.h"
#include "PIDetailCropVC.h"
#include "PIDetailEffectVC.h"
#include "PIDetailFileVC.h"
#include "PIDetailWordsVC.h"
#include "PIFolder.h"
#include "PIImageView.h"
#include "PhotoLibrary.h"
#include "StepControl.h"
#include "UserDefaults.h"

#include <QAction>
#include <QBoxLayout>

#include <utility>

namespace {

const QString kDetailOpenKey = QStringLiteral("hmphoto.detailOpen");

}

PIDetailController::PIDetailController(LibraryEditor &editor, QVUndoManager &undo, const FilterCatalogue &catalogue,
                                       UserDefaults &defaults, QWidget *parent)
    : QObject(parent)
    , m_editor(editor)
    , m_library(editor.library())
    , m_defaults(defaults)
    , m_openSections(defaults.dictionary(kDetailOpenKey))
    , m_photoSide(new QWidget)
    , m_tools(new QHBoxLayout)
    , m_photoView(new PIImageView(editor))
    , m_view(new DetailPane(m_photoSide, makeSections(undo, catalogue), parent))
{
    auto *layout = new QVBoxLayout(m_photoSide);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_photoView, 1);
    layout->addLayout(m_tools);
    m_tools->setContentsMargins(6, 2, 6, 2);
    m_tools->setSpacing(6);
    NotificationCenter &center = m_library.notifications();
    m_selectObserver =
        center.observe(kSelectNotification, [this](const NotificationObject &object) { photoWasSelected(object); });
    const auto reload = [this](const NotificationObject &object) {
        if (m_photo && object.as<PIPhoto>() == m_photo.get())
            reloadPhoto();
    };
    m_thumbnailObserver = center.observe(kThumbnailNotification, reload);
    m_photoObserver = center.observe(kPhotoNotification, reload);
    m_redrawObserver = center.observe(kRedrawNotification, reload);
    m_redetailObserver = center.observe(kRedetailNotification, [this](const NotificationObject &) { reloadPhoto(); });
}

PIDetailController::~PIDetailController()
{
    m_defaults.setDictionary(kDetailOpenKey, m_openSections);
}

QWidget *PIDetailController::view() const
{
    return m_view;
}

QWidget *PIDetailController::makeSections(QVUndoManager &undo, const FilterCatalogue &catalogue)
{
    auto *sections = new QWidget;
    auto *layout = new QVBoxLayout(sections);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_wordController = new PIDetailWordsVC(m_editor, *this, sections);
    const auto shownFolder = [this] { return m_editor.view().shownFolder(); };
    addSection(QStringLiteral("DetailWords"), tr("Caption and Keywords"), m_wordController, *layout);
    addSection(QStringLiteral("DetailFile"), tr("File"), new PIDetailFileVC(m_library, *this, shownFolder, sections),
               *layout);
    m_cropController = new PIDetailCropVC(m_editor, *this, *m_photoView, sections);
    addSection(QStringLiteral("DetailCrop"), tr("Crop"), m_cropController, *layout);
    m_effectController = new PIDetailEffectVC(m_editor, undo, catalogue, *this, sections);
    addSection(QStringLiteral("DetailEffects"), tr("Effects"), m_effectController, *layout);
    layout->addStretch();
    return sections;
}

void PIDetailController::addSection(const QString &layoutName, const QString &title, QWidget *content,
                                    QBoxLayout &layout)
{
    auto *section = new CollapsibleSection(title, content);
    section->setOpen(m_openSections.value(layoutName, true).toBool());
    connect(section, &CollapsibleSection::openChanged, this,
            [this, layoutName](bool open) { m_openSections.insert(layoutName, open); });
    layout.addWidget(section);
}

void PIDetailController::addStepControl(QAction &previous, QAction &next)
{
    m_stepControl = new StepControl(previous, next);
    m_tools->insertWidget(0, m_stepControl);
    m_stepControl->setEnabled(canStep());
    connect(m_photoView, &PIImageView::stepWanted, this, [&previous, &next](StepDirection direction) {
        (direction == StepDirection::Next ? next : previous).trigger();
    });
}

void PIDetailController::addQuickSearch(QWidget &field)
{
    m_tools->addWidget(&field, 1);
}

void PIDetailController::photoWasSelected(const NotificationObject &object)
{
    PIPhoto *photo = object.as<PIPhoto>();
    m_photo = photo ? photo->shared_from_this() : nullptr;
    m_photoView->photoWasSelected(m_photo, neighbours());
    showCurrentPhoto();
}

void PIDetailController::reloadPhoto()
{
    m_photoView->reload();
    showCurrentPhoto();
}

void PIDetailController::showCurrentPhoto()
{
    if (m_stepControl)
        m_stepControl->setEnabled(canStep());
    m_library.notifications().post(kUpdateDetailNotification, m_photo);
}

/// The photos to which the next steps lead will be sharp at once.
PIGroup::PhotoList PIDetailController::neighbours()
{
    const std::shared_ptr<const PIFolder> folder = m_editor.view().shownFolder();
    const qsizetype position = folder ? folder->photos().indexOf(m_photo) : -1;
    if (position < 0)
        return {};
    const IndexSet selected = m_editor.view().selectedIndexes();
    const qsizetype count = folder->photos().size();
    if (const qint64 before = std::exchange(m_position, position); before != position)
        m_direction = PhotoStep::between(before, position, count, selected);
    PIGroup::PhotoList photos;
    for (const qint64 index : PhotoStep::likely(position, count, selected, m_direction))
        photos << folder->photos().at(index);
    return photos;
}

bool PIDetailController::canStep() const
{
    const std::shared_ptr<const PIFolder> folder = m_editor.view().shownFolder();
    const qsizetype reference = folder ? folder->photos().indexOf(m_photo) : -1;
    return reference >= 0 &&
           PhotoStep::from(reference, folder->photos().size(), m_editor.view().selectedIndexes(), StepDirection::Next);
}
