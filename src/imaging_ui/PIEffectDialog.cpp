#include "PIEffectDialog.h"

#include "EffectList.h"
#include "EffectPreview.h"
#include "LibraryEditor.h"
#include "PIEffectUIManager.h"
#include "PIPhoto.h"
#include "PhotoLibrary.h"

#include <QBoxLayout>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QScrollArea>
#include <QSplitter>

namespace {

constexpr int kCompareKey = Qt::Key_F8;
constexpr QRgb kTrialColor = qRgb(145, 25, 7);
constexpr QRgb kTrialColorOnDark = qRgb(255, 140, 120);

}

PIEffectDialog *PIEffectDialog::editPhotoEffects(LibraryEditor &editor, const FilterCatalogue &catalogue,
                                                 UserDefaults &defaults, const std::shared_ptr<PIPhoto> &photo,
                                                 QWidget &inWindow)
{
    auto *dialog = new PIEffectDialog(editor, catalogue, defaults, photo, &inWindow);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
    return dialog;
}

PIEffectDialog::PIEffectDialog(LibraryEditor &editor, const FilterCatalogue &catalogue, UserDefaults &defaults,
                               const std::shared_ptr<PIPhoto> &photo, QWidget *parent)
    : QDialog(parent)
    , m_catalogue(catalogue)
    , m_session(editor, catalogue, photo, *this)
    , m_findField(new QLineEdit(this))
    , m_effectList(new EffectList(catalogue, defaults, this))
    , m_preview(new EffectPreview(this))
    , m_filterNameField(new QLabel(this))
    , m_purposeField(new QLabel(this))
    , m_containerView(new QWidget(this))
    , m_uiManager(new PIEffectUIManager(*m_containerView, catalogue, *this))
    , m_addButton(new QPushButton(tr("&Add"), this))
    , m_removeButton(new QPushButton(tr("&Remove"), this))
    , m_resetButton(new QPushButton(tr("Re&set"), this))
{
    setObjectName(QStringLiteral("EffectDialog"));
    setWindowTitle(tr("Effects"));
    setWindowModality(Qt::WindowModal);
    auto *sides = new QSplitter(this);
    sides->addWidget(makeLeftSide());
    sides->addWidget(makeRightSide());
    sides->setStretchFactor(1, 1);
    sides->setSizes({260, 700});
    sides->setChildrenCollapsible(false);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(sides, 1);
    layout->addWidget(makeButtons());
    resize(980, 740);

    m_uiManager->setIncludeTextFields(true);
    m_uiManager->setPhoto(m_session.workingPhoto());
    connect(m_preview, &EffectPreview::originalChanged, this, [this] {
        constexpr QSize kPickerPicture(360, 240);
        m_uiManager->setPicture(
            m_preview->original().scaled(kPickerPicture, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    });
    m_preview->setPicture(photo->recipe(editor.library().imageCache()));
    m_effectList->installEventFilter(this);
    connect(m_effectList, &QTreeWidget::itemSelectionChanged, this, &PIEffectDialog::selectionDidChange);
    updatePhotoForFilterSet();
    showFilter();
}

QWidget *PIEffectDialog::makeLeftSide()
{
    auto *side = new QWidget(this);
    m_findField->setPlaceholderText(tr("Find effect"));
    m_findField->setAccessibleName(m_findField->placeholderText());
    m_findField->setClearButtonEnabled(true);
    connect(m_findField, &QLineEdit::textChanged, m_effectList, &EffectList::find);
    auto *layout = new QVBoxLayout(side);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_findField);
    layout->addWidget(m_effectList, 1);
    return side;
}

QWidget *PIEffectDialog::makeRightSide()
{
    m_addButton->setToolTip(tr("Keep the effect that is being tried"));
    m_removeButton->setToolTip(tr("Take this effect off the photo"));
    m_resetButton->setToolTip(tr("Reset this effect to the default settings"));
    connect(m_addButton, &QPushButton::clicked, this, &PIEffectDialog::addFilter);
    connect(m_removeButton, &QPushButton::clicked, this, &PIEffectDialog::removeFilter);
    connect(m_resetButton, &QPushButton::clicked, this, &PIEffectDialog::revertEffect);
    m_filterNameField->setTextFormat(Qt::PlainText);
    QFont bold = font();
    bold.setBold(true);
    m_filterNameField->setFont(bold);
    m_purposeField->setTextFormat(Qt::PlainText);
    m_purposeField->setWordWrap(true);

    auto *title = new QHBoxLayout;
    title->addWidget(m_filterNameField, 1);
    for (QPushButton *button : {m_addButton, m_removeButton, m_resetButton}) {
        button->setAutoDefault(false);
        title->addWidget(button);
    }
    auto *scroller = new QScrollArea(this);
    scroller->setFrameShape(QFrame::NoFrame);
    scroller->setWidgetResizable(true);
    scroller->setWidget(m_containerView);
    m_containerView->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);

    auto *filter = new QWidget(this);
    auto *filterLayout = new QVBoxLayout(filter);
    filterLayout->setContentsMargins(0, 0, 0, 0);
    filterLayout->addLayout(title);
    filterLayout->addWidget(m_purposeField);
    filterLayout->addWidget(scroller, 1);

    auto *side = new QSplitter(Qt::Vertical, this);
    side->addWidget(m_preview);
    side->addWidget(filter);
    side->setStretchFactor(0, 1);
    side->setSizes({410, 270});
    side->setChildrenCollapsible(false);
    return side;
}

QWidget *PIEffectDialog::makeButtons()
{
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    QPushButton *compare = buttons->addButton(tr("Without Effects"), QDialogButtonBox::ResetRole);
    compare->setToolTip(tr("While this is held down, or the key F8, the photo is shown without effects"));
    compare->setAutoDefault(false);
    connect(compare, &QPushButton::pressed, m_preview, [this] { m_preview->setComparing(true); });
    connect(compare, &QPushButton::released, m_preview, [this] { m_preview->setComparing(false); });
    connect(buttons, &QDialogButtonBox::accepted, this, &PIEffectDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &PIEffectDialog::reject);
    return buttons;
}

void PIEffectDialog::accept()
{
    // Also when the change is refused: then there is nothing else to be done here.
    static_cast<void>(m_session.setEffects());
    QDialog::accept();
}

/// The list would take the key for itself.
bool PIEffectDialog::eventFilter(QObject *object, QEvent *event)
{
    if (event->type() != QEvent::KeyPress || static_cast<QKeyEvent *>(event)->key() != kCompareKey)
        return QDialog::eventFilter(object, event);
    keyPressEvent(static_cast<QKeyEvent *>(event));
    return true;
}

/// Whoever goes to another window may let the key go there.
void PIEffectDialog::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange)
        m_preview->setComparing(false);
}

/// In the search field, Enter leads to what was found, and Escape ends the search first.
void PIEffectDialog::keyPressEvent(QKeyEvent *event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == kCompareKey)
        m_preview->setComparing(true);
    else if (isEnter && m_findField->hasFocus())
        m_effectList->selectFirstFound();
    else if (event->key() == Qt::Key_Escape && m_findField->hasFocus() && !m_findField->text().isEmpty())
        m_findField->clear();
    else
        QDialog::keyPressEvent(event);
}

void PIEffectDialog::keyReleaseEvent(QKeyEvent *event)
{
    if (event->key() == kCompareKey && !event->isAutoRepeat())
        m_preview->setComparing(false);
    else
        QDialog::keyReleaseEvent(event);
}

void PIEffectDialog::updatePhotoForFilterChange()
{
    m_preview->setChain(m_session.workingPhoto()->filterDicts());
}

void PIEffectDialog::updatePhotoForFilterSet()
{
    m_effectList->showChain(m_session.workingPhoto()->filterDicts(),
                            m_session.isProvisionalAdd() ? m_session.currentFilter() : QString());
    m_effectList->expandApplied();
    updatePhotoForFilterChange();
}

void PIEffectDialog::selectionDidChange()
{
    if (m_handlingSelection)
        return;
    const QScopedValueRollback handling(m_handlingSelection, true);
    const QString filter = m_effectList->selectedFilter();
    if (filter == m_session.currentFilter())
        return;
    m_session.select(filter);
    showFilter();
}

void PIEffectDialog::addFilter()
{
    const QScopedValueRollback handling(m_handlingSelection, true);
    m_session.addFilter();
    m_effectList->selectApplied(m_session.currentFilter());
    showFilter();
}

void PIEffectDialog::removeFilter()
{
    const QScopedValueRollback handling(m_handlingSelection, true);
    m_session.removeFilter();
    m_effectList->setCurrentItem(nullptr);
    showFilter();
}

void PIEffectDialog::revertEffect()
{
    m_uiManager->edits().revertEffect(m_catalogue.tagForFilter(m_session.currentFilter()));
    showFilter();
}

void PIEffectDialog::showFilter()
{
    const QString &current = m_session.currentFilter();
    const FilterAttributes *filter = m_catalogue.description(current);
    const bool isUnknown = !current.isEmpty() && !filter;
    m_purposeField->setText(filter      ? filter->description
                            : isUnknown ? tr("This effect is not known here. It changes nothing.")
                                        : tr("Select an effect to try it."));
    m_addButton->setEnabled(m_session.isProvisionalAdd());
    m_removeButton->setEnabled(m_session.isApplied());
    m_resetButton->setEnabled(filter && m_session.currentEntry());
    showName();
    // Of several entries of one filter, controls change the first.
    const EffectEntry *entry = m_uiManager->edits().entry(current);
    const bool hasControls = entry && filter;
    m_uiManager->setFilterUIFrom(hasControls ? EffectChain{*entry} : EffectChain());
}

void PIEffectDialog::showName()
{
    const QString name = m_catalogue.displayName(m_session.currentFilter());
    QPalette colors = palette();
    if (m_session.isProvisionalAdd()) {
        const bool isDark = colors.color(QPalette::Window).lightness() < 128;
        colors.setColor(QPalette::WindowText, QColor(isDark ? kTrialColorOnDark : kTrialColor));
    }
    m_filterNameField->setPalette(colors);
    m_filterNameField->setText(m_session.isProvisionalAdd() ? tr("%1 (trial)").arg(name) : name);
}
