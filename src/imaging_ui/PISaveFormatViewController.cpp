#include "PISaveFormatViewController.h"

#include "ExportPreferences.h"
#include "SaveImage.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QSlider>

#include <cmath>

namespace {

constexpr int kBestQuality = 10;
constexpr int kSmallestSize = 4;

/// A control with a text beside it.
QHBoxLayout *beside(QWidget *control, QLabel *text)
{
    auto *row = new QHBoxLayout;
    row->addWidget(control, 1);
    row->addWidget(text);
    return row;
}

/// Room enough for the longest text, so that nothing moves.
QLabel *noteLabel(const QString &longest, QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setMinimumWidth(label->fontMetrics().horizontalAdvance(longest));
    return label;
}

}

PISaveFormatViewController::PISaveFormatViewController(QSize imageSize, QWidget *parent)
    : QWidget(parent)
    , m_imageSize(imageSize)
    , m_format(new QComboBox(this))
    , m_size(new QComboBox(this))
    , m_pixels(noteLabel(tr("%1 × %2 pixels").arg(88888).arg(88888), this))
    , m_quality(new QSlider(Qt::Horizontal, this))
    , m_qualityNumber(noteLabel(QStringLiteral("88"), this))
    , m_compressTiff(new QCheckBox(tr("Compress TIFF files"), this))
{
    m_format->addItems({tr("JPEG"), tr("PDF"), tr("PNG"), tr("TIFF")});
    addSizesTo(*m_size);
    m_quality->setRange(0, kBestQuality);
    m_quality->setPageStep(1);
    m_quality->setTickPosition(QSlider::TicksBelow);
    m_quality->setToolTip(tr("Better quality makes larger files"));
    m_quality->setValue(int(std::lround(g_jpegCompression)));
    m_compressTiff->setToolTip(tr("Makes TIFF files smaller; nothing of the picture is lost"));
    m_compressTiff->setChecked(g_tiffCompression);

    auto *layout = new QFormLayout(this);
    layout->addRow(tr("Format:"), m_format);
    layout->addRow(tr("Size:"), beside(m_size, m_pixels));
    layout->addRow(tr("JPEG quality:"), beside(m_quality, m_qualityNumber));
    layout->addRow(QString(), m_compressTiff);

    showChoices();
    connect(m_format, &QComboBox::activated, this, &PISaveFormatViewController::changeFormat);
    connect(m_size, &QComboBox::activated, this, &PISaveFormatViewController::changeSize);
    connect(m_quality, &QSlider::valueChanged, this, &PISaveFormatViewController::changeCompression);
    connect(m_compressTiff, &QCheckBox::toggled, this, &PISaveFormatViewController::changeCompression);
}

void PISaveFormatViewController::addSizesTo(QComboBox &box)
{
    box.addItem(tr("Full size"));
    for (int option = 1; option <= kSmallestSize; ++option)
        box.addItem(tr("At most %1 pixels").arg(exportSideLimit(option)));
    box.setToolTip(tr("The longer side of the picture. Smaller pictures are not enlarged"));
}

void PISaveFormatViewController::setImageSize(QSize imageSize)
{
    m_imageSize = imageSize;
    showChoices();
}

QSize PISaveFormatViewController::finalImageSize() const
{
    return ::finalImageSize(m_imageSize, g_sizeOption);
}

void PISaveFormatViewController::setFormat(int format)
{
    if (format != g_saveFormat)
        changeFormat(format);
}

void PISaveFormatViewController::changeFormat(int format)
{
    g_saveFormat = format;
    showChoices();
    Q_EMIT formatChanged(format);
}

void PISaveFormatViewController::changeSize(int option)
{
    g_sizeOption = option;
    showChoices();
}

void PISaveFormatViewController::changeCompression()
{
    g_jpegCompression = m_quality->value();
    g_tiffCompression = m_compressTiff->isChecked();
    showChoices();
}

void PISaveFormatViewController::showChoices()
{
    m_format->setCurrentIndex(g_saveFormat);
    m_size->setCurrentIndex(g_sizeOption >= 0 && g_sizeOption <= kSmallestSize ? g_sizeOption : 0);
    const QSize size = finalImageSize();
    m_pixels->setText(size.isEmpty() ? QString() : tr("%1 × %2 pixels").arg(size.width()).arg(size.height()));
    const SaveFileType type = typeForFormat(g_saveFormat);
    m_quality->setEnabled(type == SaveFileType::Jpeg);
    m_qualityNumber->setEnabled(type == SaveFileType::Jpeg);
    m_qualityNumber->setNum(m_quality->value());
    m_compressTiff->setEnabled(type == SaveFileType::Tiff);
}
