#include "PIDetailCropVC.h"

#include "DetailEdits.h"
#include "LibraryEditor.h"
#include "LibraryNotifications.h"
#include "PhotoLibrary.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>

PIDetailCropVC::PIDetailCropVC(LibraryEditor &editor, const PIDetailController &controller, QWidget *parent)
    : PIDetailBaseVC(editor.library(), controller, parent)
    , m_editor(editor)
    , m_cropSizeField(new QLabel(this))
    , m_uncropButton(new QPushButton(tr("Uncrop"), this))
{
    m_cropSizeField->setToolTip(tr("Width and height of the crop in pixels"));
    m_cropSizeField->setAccessibleName(tr("Crop size"));
    m_uncropButton->setToolTip(tr("Show the whole picture again"));
    m_uncropButton->setAccessibleName(m_uncropButton->text());
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 4, 12, 10);
    layout->addWidget(m_cropSizeField, 1);
    layout->addWidget(m_uncropButton);
    connect(m_uncropButton, &QPushButton::clicked, this, &PIDetailCropVC::uncrop);
    selectionChanged();
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
    const QRectF &crop = photo()->cropRect();
    m_cropSizeField->setText(
        crop.isEmpty() ? tr("None")
                       : tr("%1 x %2").arg(static_cast<int>(crop.width())).arg(static_cast<int>(crop.height())));
    m_uncropButton->setEnabled(!crop.isEmpty());
}

void PIDetailCropVC::uncrop()
{
    const auto cropped = photo();
    if (DetailEdits::setCrop(m_editor, cropped, {}))
        library().notifications().post(kSelectNotification, cropped);
}
