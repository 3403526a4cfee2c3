#include "CameraRows.h"

#include "CameraFacts.h"
#include "CameraFactsText.h"
#include "InBackground.h"
#include "PIFileRef.h"

#include <QFormLayout>
#include <QLabel>

namespace {

constexpr int kReadsAtOnce = 4; // a disk may not answer
constexpr int kNarrowestText = 60;

}

CameraRows::CameraRows(QFormLayout &form, QWidget &section)
    : QObject(&section)
    , m_form(form)
    , m_section(section)
    , m_worker(QStringLiteral("hmphoto.cameraFacts"), kReadsAtOnce, DispatchQueue::AtEnd::LeaveBehind)
{
    addRow(Taken, tr("Taken:"));
    addRow(Camera, tr("Camera:"));
    addRow(Lens, tr("Lens:"));
    addRow(Exposure, tr("Exposure:"));
}

void CameraRows::addRow(Row row, const QString &title)
{
    auto *text = new QLabel(&m_section);
    text->setTextFormat(Qt::PlainText);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    text->setWordWrap(true);
    text->setMinimumWidth(kNarrowestText);
    m_texts[row] = text;
    m_titles[row] = title;
    m_form.addRow(title, text);
    m_form.setRowVisible(text, false);
}

void CameraRows::show(const std::shared_ptr<PIFileRef> &file)
{
    const QString guid = file ? file->guid() : QString();
    const quint32 age = file ? file->factsAge() : 0;
    if (guid == m_shownFile && age == m_factsAge)
        return;
    const bool isOther = guid != m_shownFile;
    m_shownFile = guid;
    m_factsAge = age;
    ++*m_newest;
    if (!file)
        return take({});
    for (QLabel *text : m_texts) {
        if (isOther)
            text->clear();
    }
    read(file->path());
}

void CameraRows::read(const QString &path)
{
    const auto isNewest = [newest = m_newest, number = m_newest->load()] { return *newest == number; };
    inBackground(
        m_worker, this, [path, isNewest] { return isNewest() ? CameraFacts::ofFile(path) : CameraFacts(); },
        [this, isNewest](const CameraFacts &facts) {
            if (isNewest())
                take(facts);
        });
}

void CameraRows::take(const CameraFacts &facts)
{
    setText(Taken, takenText(facts));
    setText(Camera, facts.camera);
    setText(Lens, facts.lens);
    setText(Exposure, exposureText(facts));
}

void CameraRows::setText(Row row, const QString &text)
{
    m_texts[row]->setText(text);
    m_texts[row]->setAccessibleName(m_titles[row] + u' ' + text);
    m_form.setRowVisible(m_texts[row], !text.isEmpty());
}
