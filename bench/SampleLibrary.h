#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

/// The size of a made-up library. As it stands it makes about 60 MB of Photo.xml.
struct SampleShape
{
    int photos = 100'000;
    int folders = 2'000;
    int keywords = 600;
    quint32 seed = 1;
    QString root = QStringLiteral("~/Pictures"); ///< where the photos' folders are said to be
};

/// A library such as a busy photographer has: shoots of some fifty pictures in folders three deep; most pictures with
/// keywords and a caption, some marked, cropped or filtered. The same seed gives the same library.
struct SampleLibrary
{
    struct Attribute
    {
        QString key;
        QString type;
        QString value;
    };
    using Filter = QList<Attribute>;

    struct Photo
    {
        QString guid;
        QString fileGuid;
        QString file;
        int folder = 0; ///< index into folders
        QString caption;
        QString keys;
        QString crop;
        qint64 thumbnailDate = 0;
        bool marked = false;
        QList<Filter> filters;
    };
    struct Folder
    {
        QString guid;
        QString groupGuid; ///< only where a group begins
        QString name;
        QString path;
        QString selection;
        QString photos; ///< their numbers
        int depth = 0;  ///< 0 below the group; each at most one deeper than the one before
        bool closed = false;
    };

    QList<QString> keywords;
    QList<Folder> folders;     ///< in the order in which they are saved
    int foldersPerGroup = 100; ///< a group begins at each multiple
    QList<Photo> photos;       ///< in the order of the folders
};

[[nodiscard]] SampleLibrary makeSampleLibrary(const SampleShape &shape = {});

/// The library as it stands in Photo.xml, written by QVXmlEncoder.
[[nodiscard]] QByteArray sampleLibraryText(const SampleLibrary &library);
