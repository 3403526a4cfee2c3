#pragma once

#include <QString>
#include <QStringList>

/// What people wrote about a picture into its file, or into a sidecar: an XMP file beside it.
struct PictureWords
{
    QString caption;      ///< on one line; empty when there is none
    QStringList keywords; ///< each once, as it was written: it may hold blanks and punctuation

    [[nodiscard]] bool isEmpty() const { return caption.isEmpty() && keywords.isEmpty(); }

    static constexpr qsizetype kLongestCaption = 10'000;
    static constexpr qsizetype kMostKeywords = 1'000;
    static constexpr qsizetype kLongestKeyword = 200; ///< a longer one is left out

    /// Those of the image file at `path`: its sidecar comes before its XMP, that before its IPTC, for caption and
    /// keywords each. The files are read only. May take as long as the disk likes; any thread.
    [[nodiscard]] static PictureWords ofFile(const QString &path);
};
