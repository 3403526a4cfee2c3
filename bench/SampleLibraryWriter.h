#pragma once

#include "SampleLibrary.h"

#include <algorithm>

/// An element or attribute name in the forms that writers want.
struct TagName
{
    explicit TagName(QByteArrayView name)
        : ascii(name)
        , text(QString::fromLatin1(name))
    {}
    QByteArrayView ascii;
    QString text;
};

/// Writes a library through any writer that has QVXmlEncoder's operations on TagName, so that all writers that are
/// compared are asked for the same document in the same way.
template<typename Writer>
class SampleLibraryWriter
{
public:
    SampleLibraryWriter(const SampleLibrary &library, Writer &writer)
        : m_library(library)
        , m_writer(writer)
    {}

    void write()
    {
        m_writer.addAttribute(version, quint64(0));
        m_writer.openTag(root);
        writeFiles();
        writeKeywords();
        m_writer.openTag(photos);
        for (qsizetype i = 0; i < m_library.photos.size(); ++i)
            writePhoto(i);
        m_writer.closeTag(photos);
        writeStructure();
        m_writer.closeTag(root);
    }

private:
    static quint64 number(qsizetype index) { return static_cast<quint64>(index); }

    void writeFiles()
    {
        m_writer.openTag(files);
        m_writer.openTag(folders);
        for (qsizetype i = 0; i < m_library.folders.size(); ++i) {
            m_writer.addAttribute(seq, number(i));
            m_writer.addAttribute(path, m_library.folders[i].path);
            m_writer.openAndCloseTag(folder);
        }
        m_writer.closeTag(folders);
        m_writer.openTag(refs);
        for (qsizetype i = 0; i < m_library.photos.size(); ++i) {
            const SampleLibrary::Photo &shown = m_library.photos[i];
            m_writer.addAttribute(seq, number(i));
            m_writer.addAttribute(folder, number(shown.folder));
            m_writer.addAttribute(id, shown.fileGuid);
            m_writer.addAttribute(file, shown.file);
            m_writer.openAndCloseTag(ref);
        }
        m_writer.closeTag(refs);
        m_writer.closeTag(files);
    }

    void writeKeywords()
    {
        m_writer.openTag(keys);
        for (qsizetype i = 0; i < m_library.keywords.size(); ++i) {
            m_writer.addAttribute(seq, number(i));
            m_writer.addAttribute(keyword, m_library.keywords[i]);
            m_writer.openAndCloseTag(key);
        }
        m_writer.closeTag(keys);
    }

    void writePhoto(qsizetype index)
    {
        const SampleLibrary::Photo &shown = m_library.photos[index];
        m_writer.addAttribute(seq, number(index));
        m_writer.addAttribute(id, shown.guid);
        m_writer.addAttribute(ref, number(index));
        m_writer.openTag(photo);
        if (shown.marked)
            m_writer.addTag(mark, quint64(1));
        addText(caption, shown.caption);
        addText(keys, shown.keys);
        m_writer.addLongTag(thumb, shown.thumbnailDate);
        addText(crop, shown.crop);
        if (!shown.filters.isEmpty())
            writeFilters(shown.filters);
        m_writer.closeTag(photo);
    }

    void addText(const TagName &tag, const QString &text)
    {
        if (!text.isEmpty())
            m_writer.addTag(tag, text);
    }

    void writeFilters(const QList<SampleLibrary::Filter> &chain)
    {
        m_writer.openTag(filters);
        for (const SampleLibrary::Filter &entry : chain) {
            m_writer.openTag(filter);
            for (const SampleLibrary::Attribute &attribute : entry) {
                m_writer.addAttribute(key, attribute.key);
                m_writer.addAttribute(type, attribute.type);
                m_writer.addAttribute(value, attribute.value);
                m_writer.openAndCloseTag(attr);
            }
            m_writer.closeTag(filter);
        }
        m_writer.closeTag(filters);
    }

    void writeStructure()
    {
        m_writer.openTag(structure);
        for (qsizetype i = 0; i < m_library.folders.size(); i += m_library.foldersPerGroup) {
            m_writer.addAttribute(seq, number(i / m_library.foldersPerGroup));
            m_writer.addAttribute(id, m_library.folders[i].groupGuid);
            m_writer.addAttribute(name, m_library.folders[i].name);
            m_writer.openTag(group);
            m_writer.openTag(folders);
            const qsizetype end = std::min(i + m_library.foldersPerGroup, m_library.folders.size());
            for (qsizetype next = i; next < end;)
                next = writeFolder(next, end);
            m_writer.closeTag(folders);
            m_writer.closeTag(group);
        }
        m_writer.closeTag(structure);
    }

    /// With everything beneath it; the folder after that.
    qsizetype writeFolder(qsizetype index, qsizetype end)
    {
        const SampleLibrary::Folder &shown = m_library.folders[index];
        m_writer.addAttribute(seq, number(index));
        m_writer.addAttribute(id, shown.guid);
        m_writer.addAttribute(name, shown.name);
        m_writer.openTag(folder);
        if (shown.closed)
            m_writer.addTag(hide, quint64(1));
        addText(photos, shown.photos);
        addText(selection, shown.selection);
        qsizetype next = index + 1;
        if (next < end && m_library.folders[next].depth > shown.depth) {
            m_writer.openTag(folders);
            while (next < end && m_library.folders[next].depth > shown.depth)
                next = writeFolder(next, end);
            m_writer.closeTag(folders);
        }
        m_writer.closeTag(folder);
        return next;
    }

    const SampleLibrary &m_library;
    Writer &m_writer;
    const TagName root{"Photo"}, version{"version"}, files{"files"}, folders{"folders"}, folder{"folder"}, seq{"seq"},
        path{"path"}, refs{"refs"}, ref{"ref"}, id{"id"}, file{"file"}, keys{"keys"}, key{"key"}, keyword{"keyword"},
        photos{"photos"}, photo{"photo"}, mark{"mark"}, caption{"caption"}, thumb{"thumb"}, crop{"crop"},
        filters{"filters"}, filter{"filter"}, attr{"attr"}, type{"type"}, value{"value"}, structure{"structure"},
        group{"group"}, name{"name"}, hide{"hide"}, selection{"selection"};
};
