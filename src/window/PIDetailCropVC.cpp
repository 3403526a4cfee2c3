#include "PIDetailCropVC.h"

#include "DetailEdits.h"
#include "LibraryEditor.h"
#include "LibraryNotifications.h"
#include "PIImageView.h"
#include "PhotoLibrary.h"

#include <QBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>

PIDetailCropVC::PIDetailCropVC(LibraryEditor &editor, const PIDetailController &controller, const PIImageView &view,
                               QWidget *parent)
    : PIDetailBaseVC(editor.library(), controller, parent)
    , m_editor(editor)
    , m_view(view)
    , m_cropSizeField(new QLabel(this))
    , m_uncropButton(new QPushButton(tr("Uncrop"), this))
    , m_buttons(new QHBoxLayout)
{
    m_cropSizeField->setToolTip(tr("Width and height of the crop in pixels"));
    m_cropSizeField->setAccessibleName(tr("Crop size"));
    m_uncropButton->setToolTip(tr("Show the whole picture again"));
    m_uncropButton->setAccessibleName(m_uncropButton->text());
    m_buttons->addWidget(m_uncropButton);
    m_buttons->addStretch();
    auto *layout = new QVBoxLayout(this); // one row of all would be wider than a narrow pane
    layout->setContentsMargins(12, 4, 12, 10);
    layout->addWidget(m_cropSizeField);
    layout->addLayout(m_buttons);
    connect(&view, &PIImageView::cropChanged, this, &PIDetailCropVC::selectionChanged);
    connect(m_uncropButton, &QPushButton::clicked, this, &PIDetailCropVC::uncrop);
    selectionChanged();
}

void PIDetailCropVC::addCommands(QAction &crop, QMenu &cropSizes)
{
    auto *button = new QToolButton(this);
    button->setDefaultAction(&crop);
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    auto *sizes = new QToolButton(this);
    sizes->setDefaultAction(cropSizes.menuAction());
    sizes->setToolTip(tr("Hold the crop to a shape"));
    sizes->setPopupMode(QToolButton::InstantPopup);
    m_buttons->insertWidget(0, button);
    m_buttons->insertWidget(1, sizes);
}

void PIDetailCropVC::selectionChanged()
{
    if (havePhoto())
        return updateCrop();
    m_cropSizeField->clear();
    m_uncropButton->setEnabled(false);
}

void PIDetailCropVC::updateCrop()
{
    const bool isCropping = m_view.isCropping();
    const QRectF &crop = isCropping ? m_view.cropRect() : photo()->cropRect();
    m_cropSizeField->setText(
        crop.isEmpty() ? tr("None")
                       : tr("%1 x %2").arg(static_cast<int>(crop.width())).arg(static_cast<int>(crop.height())));
    m_uncropButton->setEnabled(!isCropping && !crop.isEmpty());
}

void PIDetailCropVC::uncrop()
{
    const auto cropped = photo();
    if (DetailEdits::setCrop(m_editor, cropped, {}))
        library().notifications().post(kSelectNotification, cropped);
}
