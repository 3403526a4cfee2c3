#pragma once

#include "DispatchQueue.h"
#include "Image.h"
#include "ImageRenderer.h"

#include <QPixmap>
#include <QTimer>
#include <QWidget>

/// The picture in a file that no photo shows yet, fitted and centred; opened and decoded in the background.
class PicturePreview final : public QWidget
{
    Q_OBJECT

public:
    /// `pool` holds decoded pixels and outlives the preview.
    PicturePreview(PixelPool &pool, QWidget *parent);

    /// Empty shows nothing.
    void setPath(const QString &path);
    /// Whether there is a picture to be seen.
    [[nodiscard]] bool hasPicture() const { return !m_picture.isNull(); }

    [[nodiscard]] QSize sizeHint() const override { return {300, 260}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void opened(const QString &path, const Image &image);
    void render();

    QString m_path;
    QString m_message;
    Image m_image;
    QPixmap m_picture;
    QTimer m_resizeTimer;
    ImageRenderer m_renderer;
    DispatchQueue m_opener;
};
