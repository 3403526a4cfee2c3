#include "PIDetailController.h"

#include "CollapsibleSection.h"
#include "LibraryNotifications.h"
#include "PIDetailFileVC.h"
#include "PIFolder.h"
#include "PhotoLibrary.h"
#include "PhotoView.h"
#include "UserDefaults.h"

#include <QBoxLayout>
#include <QScrollArea>
#include <QSplitter>

namespace {

const QString kDetailOpenKey = QStringLiteral("hmphoto.detailOpen");
/// Before the window has its size: what the photo has more than this, it gets as well.
constexpr int kPhotoHeight = 400;

}

PIDetailController::PIDetailController(PhotoLibrary &library, UserDefaults &defaults, ShownFolder shownFolder,
                                       QWidget *parent)
    : QObject(parent)
    , m_library(library)
    , m_defaults(defaults)
    , m_view(new QSplitter(Qt::Vertical, parent))
    , m_photoView(new PhotoView(library.thumbnails(), library.imageCache(), library.thumbnails().pixelPool(), m_view))
    , m_openSections(defaults.dictionary(kDetailOpenKey))
{
    auto *sections = new QWidget;
    auto *layout = new QVBoxLayout(sections);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    addSection(QStringLiteral("DetailFile"), tr("File"),
               new PIDetailFileVC(library, *this, std::move(shownFolder), sections), *layout);
    layout->addStretch();

    auto *scroller = new QScrollArea(m_view);
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setWidgetResizable(true);
    scroller->setWidget(sections);
    m_view->addWidget(m_photoView);
    m_view->addWidget(scroller);
    m_view->setStretchFactor(0, 1);
    m_view->setStretchFactor(1, 0);
    m_view->setSizes({kPhotoHeight, sections->sizeHint().height()});
    m_view->setChildrenCollapsible(false);

    NotificationCenter &center = library.notifications();
    m_selectObserver =
        center.observe(kSelectNotification, [this](const NotificationObject &object) { photoWasSelected(object); });
    const auto reload = [this](const NotificationObject &object) {
        if (m_photo && object.as<PIPhoto>() == m_photo.get())
            reloadPhoto();
    };
    m_thumbnailObserver = center.observe(kThumbnailNotification, reload);
    m_redrawObserver = center.observe(kRedrawNotification, reload);
}

PIDetailController::~PIDetailController()
{
    m_defaults.setDictionary(kDetailOpenKey, m_openSections);
}

QWidget *PIDetailController::view() const
{
    return m_view;
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

void PIDetailController::photoWasSelected(const NotificationObject &object)
{
    PIPhoto *photo = object.as<PIPhoto>();
    m_photo = photo ? photo->shared_from_this() : nullptr;
    m_photoView->setPhoto(m_photo);
    m_library.notifications().post(kUpdateDetailNotification, m_photo);
}

void PIDetailController::reloadPhoto()
{
    m_photoView->reload();
    m_library.notifications().post(kUpdateDetailNotification, m_photo);
}
