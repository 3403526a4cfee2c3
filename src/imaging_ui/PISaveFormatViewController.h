#pragma once

#include <QSize>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QLabel;
class QSlider;

/// The panel with the choices for exports: format, size and compression. They are the process-wide ones, and change at
/// once.
class PISaveFormatViewController final : public QWidget
{
    Q_OBJECT

public:
    /// `imageSize` is that of the one photo, in pixels; empty for several photos, or as long as it is not known.
    explicit PISaveFormatViewController(QSize imageSize = {}, QWidget *parent = nullptr);

    void setImageSize(QSize imageSize);
    /// The size to write under the size option.
    [[nodiscard]] QSize finalImageSize() const;
    void setFormat(int format);

    /// The size options under their names.
    static void addSizesTo(QComboBox &box);

Q_SIGNALS:
    void formatChanged(int format);

private:
    void changeFormat(int format);
    void changeSize(int option);
    void changeCompression();
    void showChoices();

    QSize m_imageSize;
    QComboBox *m_format;
    QComboBox *m_size;
    QLabel *m_pixels;
    QSlider *m_quality;
    QLabel *m_qualityNumber;
    QCheckBox *m_compressTiff;
};
