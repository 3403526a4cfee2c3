#pragma once

#include <QHash>

#include <memory>

class PIPhoto;

/// A moment to which photos can be taken back, as if all of them had been copied then. It costs nothing until a photo
/// changes: only then the photo as it was is put aside. Moments may overlap and end in any order. Main thread.
class PhotoMoment
{
public:
    PhotoMoment();
    ~PhotoMoment();
    PhotoMoment(const PhotoMoment &) = delete;
    PhotoMoment &operator=(const PhotoMoment &) = delete;

    /// Each photo that changed since, with a copy of what it was at this moment.
    using Changes = QHash<std::shared_ptr<PIPhoto>, std::shared_ptr<const PIPhoto>>;
    [[nodiscard]] Changes changes() const;

    /// The number of the newest moment that still lasts; 0 when there is none.
    [[nodiscard]] static quint64 newest() { return s_newest; }
    /// A photo that was made or noted before the newest moment is about to change.
    static void note(PIPhoto &photo);

private:
    quint64 m_number;
    inline static quint64 s_newest = 0;
};
