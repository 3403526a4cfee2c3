#pragma once

#include "PIGroup.h"

#include <QString>

/// The photos that a preview steps through, and which of them it shows. The list stays as it is while it is shown.
class PreviewList
{
public:
    PreviewList() = default;
    /// Begins with the first photo.
    PreviewList(const PIGroup::PhotoList &photos, const QString &folderName);

    [[nodiscard]] qsizetype count() const { return m_photos.size(); }
    [[nodiscard]] qsizetype currentIndex() const { return m_currentIndex; }
    /// Null when there are none.
    [[nodiscard]] std::shared_ptr<PIPhoto> photo() const;

    void showPhoto(qsizetype index);
    // These lead around the ends. Nothing happens, and they answer false, when there are no photos.
    bool moveLeft();
    bool moveRight();
    bool moveToBeginning();
    bool moveToEnd();

    /// The folder, the photo's file without its extension, and the first place where the photo stands in the list.
    [[nodiscard]] QString title() const;
    /// The photos that will probably be shown next, the likeliest first.
    [[nodiscard]] PIGroup::PhotoList ahead() const;

private:
    [[nodiscard]] bool step(qsizetype by);

    PIGroup::PhotoList m_photos;
    QString m_folderName;
    qsizetype m_currentIndex = 0;
    qsizetype m_direction = 1; ///< of the last step
};
