#include "PictureNotes.h"

#include <QRegularExpression>
#include <QXmlStreamWriter>

#include <libexif/exif-data.h>

#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

struct ExifDeleter
{
    void operator()(ExifData *data) const { exif_data_unref(data); }
    void operator()(ExifMem *memory) const { exif_mem_unref(memory); }
    void operator()(ExifEntry *entry) const { exif_entry_unref(entry); }
};
using ExifDataPointer = std::unique_ptr<ExifData, ExifDeleter>;

constexpr QByteArrayView kSignature("Exif\0\0", 6);

QByteArray textOf(const ExifData &data, ExifIfd directory, ExifTag tag)
{
    const ExifEntry *entry = exif_content_get_entry(data.ifd[directory], tag);
    if (!entry || entry->format != EXIF_FORMAT_ASCII || !entry->data)
        return {};
    return QByteArray(reinterpret_cast<const char *>(entry->data), qsizetype(entry->size));
}

/// Without what has no place in an XML text. A photographer and an editor stand apart by a null.
QByteArray tidied(QByteArray text)
{
    text.truncate(PictureNotes::kMostText);
    while (text.endsWith('\0'))
        text.chop(1);
    text.removeIf([](char c) { return c > '\0' && c < ' '; });
    return text.trimmed();
}

bool isMoment(const QByteArray &text)
{
    static const QRegularExpression form(QStringLiteral("^\\d{4}:\\d\\d:\\d\\d \\d\\d:\\d\\d:\\d\\d$"));
    return form.match(QString::fromLatin1(text)).hasMatch();
}

void addText(ExifData &data, ExifIfd directory, ExifTag tag, const QByteArray &text)
{
    if (text.isEmpty())
        return;
    const std::unique_ptr<ExifMem, ExifDeleter> memory(exif_mem_new_default());
    const std::unique_ptr<ExifEntry, ExifDeleter> entry(exif_entry_new_mem(memory.get()));
    const auto size = ExifLong(text.size() + 1);
    auto *bytes = entry ? static_cast<unsigned char *>(exif_mem_alloc(memory.get(), size)) : nullptr;
    if (!bytes)
        return;
    std::memcpy(bytes, text.constData(), size);
    entry->tag = tag;
    entry->format = EXIF_FORMAT_ASCII;
    entry->components = size;
    entry->size = size;
    entry->data = bytes;
    exif_content_add_entry(data.ifd[directory], entry.get());
}

/// One text in the list that its property asks for.
void writeList(QXmlStreamWriter &xml, const QString &property, const QString &kind, QByteArray text)
{
    if (text.isEmpty())
        return;
    xml.writeStartElement(property);
    xml.writeStartElement(kind);
    xml.writeStartElement(QStringLiteral("rdf:li"));
    if (kind == QLatin1String("rdf:Alt"))
        xml.writeAttribute(QStringLiteral("xml:lang"), QStringLiteral("x-default"));
    xml.writeCharacters(QString::fromUtf8(text.replace('\0', ", ")));
    xml.writeEndElement();
    xml.writeEndElement();
    xml.writeEndElement();
}

}

PictureNotes PictureNotes::fromTexts(const QByteArray &taken, const QByteArray &artist, const QByteArray &copyright)
{
    PictureNotes notes{tidied(taken), tidied(artist), tidied(copyright)};
    if (!isMoment(notes.taken))
        notes.taken.clear();
    return notes;
}

PictureNotes PictureNotes::fromExif(QByteArrayView exif)
{
    const ExifDataPointer data(exif.isEmpty() ? nullptr : exif_data_new());
    if (!data)
        return {};
    QByteArray block = exif.toByteArray();
    if (!block.startsWith(kSignature))
        block.prepend(kSignature);
    // Left to itself the library rewrites what it finds to please its standard.
    exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
    exif_data_load_data(data.get(), reinterpret_cast<const unsigned char *>(block.constData()), unsigned(block.size()));
    return fromTexts(textOf(*data, EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_ORIGINAL),
                     textOf(*data, EXIF_IFD_0, EXIF_TAG_ARTIST), textOf(*data, EXIF_IFD_0, EXIF_TAG_COPYRIGHT));
}

QByteArray PictureNotes::exif() const
{
    const ExifDataPointer data(isEmpty() ? nullptr : exif_data_new());
    if (!data)
        return {};
    exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
    exif_data_set_byte_order(data.get(), EXIF_BYTE_ORDER_INTEL);
    addText(*data, EXIF_IFD_0, EXIF_TAG_ARTIST, artist);
    addText(*data, EXIF_IFD_0, EXIF_TAG_COPYRIGHT, copyright);
    addText(*data, EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_ORIGINAL, taken);
    unsigned char *bytes = nullptr;
    unsigned int size = 0;
    exif_data_save_data(data.get(), &bytes, &size);
    const QByteArray block(reinterpret_cast<const char *>(bytes), bytes ? qsizetype(size) : 0);
    std::free(bytes);
    return block;
}

QByteArray PictureNotes::xmp() const
{
    if (isEmpty())
        return {};
    QByteArray packet;
    QXmlStreamWriter xml(&packet);
    xml.writeProcessingInstruction(QStringLiteral("xpacket"),
                                   QStringLiteral("begin=\"\uFEFF\" id=\"W5M0MpCehiHzreSzNTczkc9d\""));
    xml.writeStartElement(QStringLiteral("x:xmpmeta"));
    xml.writeAttribute(QStringLiteral("xmlns:x"), QStringLiteral("adobe:ns:meta/"));
    xml.writeStartElement(QStringLiteral("rdf:RDF"));
    xml.writeAttribute(QStringLiteral("xmlns:rdf"), QStringLiteral("http://www.w3.org/1999/02/22-rdf-syntax-ns#"));
    xml.writeStartElement(QStringLiteral("rdf:Description"));
    xml.writeAttribute(QStringLiteral("rdf:about"), QString());
    xml.writeAttribute(QStringLiteral("xmlns:exif"), QStringLiteral("http://ns.adobe.com/exif/1.0/"));
    xml.writeAttribute(QStringLiteral("xmlns:dc"), QStringLiteral("http://purl.org/dc/elements/1.1/"));
    if (!taken.isEmpty()) {
        QByteArray moment = taken;
        moment[4] = moment[7] = '-';
        moment[10] = 'T';
        xml.writeTextElement(QStringLiteral("exif:DateTimeOriginal"), QString::fromLatin1(moment));
    }
    writeList(xml, QStringLiteral("dc:creator"), QStringLiteral("rdf:Seq"), artist);
    writeList(xml, QStringLiteral("dc:rights"), QStringLiteral("rdf:Alt"), copyright);
    xml.writeEndElement();
    xml.writeEndElement();
    xml.writeEndElement();
    xml.writeProcessingInstruction(QStringLiteral("xpacket"), QStringLiteral("end=\"r\""));
    return packet;
}
