#include "PIPreview.h"

#include "GiveAlert.h"
#include "Icons.h"
#include "LibraryEditor.h"
#include "LibraryNotifications.h"
#include "PIEditControlView.h"
#include "PIPhoto.h"
#include "PhotoLibrary.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>

namespace {

constexpr int kRestMilliseconds = 2500;
constexpr int kGap = 28; ///< between the strip, the title and the edges of the screen
constexpr int kTitlePadding = 12;

enum PreviewControl { Previous = 1, Next = 2, First = 3, Close = 5, Mark = 6, Last = 8 };

QList<PIEditControlView::Control> previewControls()
{
    return {{First, themedIcon(QLatin1String("go-first")), PIPreview::tr("Jump to first photo; or type home")},
            {Previous, themedIcon(QLatin1String("go-previous")), PIPreview::tr("Jump to previous photo; or type ←")},
            {Close, themedIcon(QLatin1String("dialog-cancel")), PIPreview::tr("Close preview window; or type ESC")},
            {Mark, themedIcon(QLatin1String("flag")), PIPreview::tr("Toggle mark; or type spacebar")},
            {Next, themedIcon(QLatin1String("go-next")), PIPreview::tr("Jump to next photo; or type →")},
            {Last, themedIcon(QLatin1String("go-last")), PIPreview::tr("Jump to last photo; or type end")}};
}

/// Of a room in which only the photo is lit.
QPalette blackPalette()
{
    QPalette palette;
    palette.setColor(QPalette::Window, Qt::black);
    palette.setColor(QPalette::WindowText, Qt::white);
    return palette;
}

/// Of the desktop, told expressly: it would be taken from the black view otherwise.
QPalette desktopPalette()
{
    QPalette palette = QGuiApplication::palette();
    for (const QPalette::ColorRole role : {QPalette::Window, QPalette::WindowText})
        palette.setColor(role, QGuiApplication::palette().color(role));
    return palette;
}

QLabel *makeTitle(QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setObjectName(QStringLiteral("PreviewTitle"));
    label->setTextFormat(Qt::PlainText); // names come from files
    label->setAlignment(Qt::AlignCenter);
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    label->setStyleSheet(
        QStringLiteral("background: rgba(0, 0, 0, 150); color: white; border-radius: 6px; padding: 5px %1px;")
            .arg(kTitlePadding));
    return label;
}

}

PIPreview::PIPreview(LibraryEditor &editor, QWidget *parent)
    : PhotoView(editor.library().thumbnails(), editor.library().imageCache(), editor.library().thumbnails().pixelPool(),
                parent)
    , m_editor(editor)
    , m_controlView(new PIEditControlView(previewControls(), this))
    , m_title(makeTitle(this))
{
    setPalette(blackPalette());
    m_controlView->setPalette(desktopPalette());
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    m_restTimer.setSingleShot(true);
    m_restTimer.setInterval(kRestMilliseconds);
    connect(&m_restTimer, &QTimer::timeout, this, &PIPreview::pointerRests);
    connect(m_controlView, &PIEditControlView::controlClicked, this, &PIPreview::controlClicked);
    const auto changed = [this](const NotificationObject &object) { photoChanged(object); };
    NotificationCenter &center = editor.library().notifications();
    m_photoObserver = center.observe(kPhotoNotification, changed);
    m_thumbnailObserver = center.observe(kThumbnailNotification, changed);
    m_redrawObserver = center.observe(kRedrawNotification, changed);
    hideControls();
}

void PIPreview::setPhotos(const PIGroup::PhotoList &photos, const QString &forFolder)
{
    m_photos = PreviewList(photos, forFolder);
    showCurrent();
}

void PIPreview::showPhoto(qsizetype index)
{
    m_photos.showPhoto(index);
    showCurrent();
}

void PIPreview::showCurrent()
{
    setPhoto(m_photos.photo(), m_photos.ahead());
    setWindowTitle();
}

void PIPreview::setWindowTitle()
{
    placeControls();
    Q_EMIT titleChanged(title());
}

QString PIPreview::title() const
{
    return m_photos.count() > 0 ? m_photos.title() : QString();
}

void PIPreview::moveLeft(Sender sender)
{
    stepped(m_photos.moveLeft(), sender);
}

void PIPreview::moveRight(Sender sender)
{
    stepped(m_photos.moveRight(), sender);
}

void PIPreview::moveToBeginningOfDocument(Sender sender)
{
    stepped(m_photos.moveToBeginning(), sender);
}

void PIPreview::moveToEndOfDocument(Sender sender)
{
    stepped(m_photos.moveToEnd(), sender);
}

void PIPreview::stepped(bool isThere, Sender sender)
{
    if (!isThere)
        return Beep();
    showCurrent();
    if (sender == Sender::Keys)
        hideControls();
}

void PIPreview::insertText(const QString &text)
{
    if (!text.startsWith(u' ') || !m_photos.photo())
        return;
    toggleMark();
    m_editor.library().setDirtyForGood(); // undo does not take it back
    m_title->show();
    m_restTimer.start();
}

void PIPreview::toggleMark()
{
    const auto photo = m_photos.photo();
    photo->setMarked(!photo->isMarked());
    m_editor.library().notifications().post(kThumbnailNotification, photo);
    setWindowTitle();
}

void PIPreview::toggleMarkWithUndo()
{
    const auto photo = m_photos.photo();
    if (photo &&
        m_editor.recorder().setUndoAction(UndoAction::Photo, UndoName::Mark, {.container = {}, .photo = photo}))
        toggleMark();
}

void PIPreview::controlClicked(int code)
{
    switch (code) {
    case Previous:
        return moveLeft(Sender::Strip);
    case Next:
        return moveRight(Sender::Strip);
    case First:
        return moveToBeginningOfDocument(Sender::Strip);
    case Last:
        return moveToEndOfDocument(Sender::Strip);
    case Close:
        Q_EMIT closeWanted();
        return;
    case Mark:
        return toggleMarkWithUndo();
    default:
        return;
    }
}

/// Its file may have been found elsewhere or have changed.
void PIPreview::photoChanged(const NotificationObject &object)
{
    if (!photo() || !object.isSameAs(photo()))
        return;
    reload();
    setWindowTitle();
}

void PIPreview::keyPressEvent(QKeyEvent *event)
{
    static const QHash<int, void (*)(PIPreview &)> moves{
        {Qt::Key_Left, [](PIPreview &self) { self.moveLeft(); }},
        {Qt::Key_Right, [](PIPreview &self) { self.moveRight(); }},
        {Qt::Key_Up, [](PIPreview &self) { self.moveUp(); }},
        {Qt::Key_Down, [](PIPreview &self) { self.moveDown(); }},
        {Qt::Key_Home, [](PIPreview &self) { self.scrollToBeginningOfDocument(); }},
        {Qt::Key_End, [](PIPreview &self) { self.scrollToEndOfDocument(); }},
    };
    const auto move = moves.value(event->key());
    const bool isPlain = !(event->modifiers() & ~Qt::KeypadModifier);
    if (event->key() == Qt::Key_Escape)
        Q_EMIT closeWanted();
    else if (move && isPlain)
        move(*this);
    else if (event->text().startsWith(u' '))
        insertText(event->text());
    else
        PhotoView::keyPressEvent(event); // which pans with Shift and the arrows
}

void PIPreview::enterEvent(QEnterEvent *event)
{
    m_pointer = event->globalPosition();
    PhotoView::enterEvent(event);
}

void PIPreview::mouseMoveEvent(QMouseEvent *event)
{
    // A window that comes up under the pointer sees it move without its having moved.
    if (!m_pointer.isNull() && event->globalPosition() != m_pointer)
        showControls();
    m_pointer = event->globalPosition();
    PhotoView::mouseMoveEvent(event);
}

void PIPreview::showControls()
{
    m_restTimer.start();
    m_pointerRests = false;
    showPointer();
    placeControls();
    m_title->show();
    m_controlView->show();
}

void PIPreview::hideControls()
{
    m_restTimer.stop();
    m_controlView->hide();
    m_title->hide();
    m_pointerRests = true;
    showPointer();
}

void PIPreview::showPointer()
{
    if (m_pointerRests)
        return setCursor(Qt::BlankCursor);
    if (cursor().shape() == Qt::BlankCursor)
        unsetCursor();
    PhotoView::showPointer();
}

/// The strip stays as long as the pointer is on it or holds the picture.
void PIPreview::pointerRests()
{
    if (m_controlView->underMouse() || isDragging())
        m_restTimer.start();
    else
        hideControls();
}

void PIPreview::placeControls()
{
    m_controlView->adjustSize();
    m_controlView->move((width() - m_controlView->width()) / 2, height() - m_controlView->height() - kGap);
    const int room = width() - 2 * (kGap + kTitlePadding);
    m_title->setText(m_title->fontMetrics().elidedText(title(), Qt::ElideMiddle, room));
    m_title->adjustSize();
    m_title->move((width() - m_title->width()) / 2, kGap);
}

void PIPreview::resizeEvent(QResizeEvent *event)
{
    PhotoView::resizeEvent(event);
    placeControls();
}
