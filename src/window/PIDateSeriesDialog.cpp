#include "PIDateSeriesDialog.h"

#include "DateFormatter.h"
#include "FileDates.h"
#include "InBackground.h"
#include "StringUtilities.h"
#include "TextForPeople.h"
#include "UserDefaults.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QDateTime>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>

namespace {

constexpr Preference<int> kWhat{"hmphoto.dsd.what", DateSeries::Seconds};
constexpr Preference<int> kHowMuch{"hmphoto.dsd.howMuch", 1};

constexpr int kLargestIncrement = 999'999'999;

QString dateText(const std::optional<qint64> &date)
{
    if (!date)
        return PIDateSeriesDialog::tr("There is no such date");
    const QDateTime moment = QDateTime::fromSecsSinceEpoch(*date);
    return g_dateFormatter.string(moment.date()) + u' ' + moment.time().toString(QStringLiteral("HH:mm:ss"));
}

}

PIDateSeriesDialog::PIDateSeriesDialog(const PIGroup::PhotoList &photos, UserDefaults &defaults, QWidget *parent)
    : QDialog(parent)
    , m_defaults(defaults)
    , m_photos(photos)
    , m_paths(DateSeries::pathsOf(photos))
    , m_increment(new QSpinBox(this))
    , m_unit(new QComboBox(this))
    , m_first(new QLabel(this))
    , m_last(new QLabel(this))
    , m_summary(new QLabel(this))
    , m_okButton(new QPushButton(tr("&Change Dates"), this))
    , m_worker(QStringLiteral("hmphoto.seriesBase"), 1, DispatchQueue::AtEnd::LeaveBehind)
{
    build();
    setWhatToChange(defaults.value(kWhat));
    const int stored = defaults.value(kHowMuch);
    setIncrement(stored == 0 ? 1 : stored);
    connect(m_increment, &QSpinBox::valueChanged, this, &PIDateSeriesDialog::showDates);
    connect(m_unit, &QComboBox::currentIndexChanged, this, &PIDateSeriesDialog::showDates);
    inBackground(
        m_worker, this, [path = m_paths.value(0)] { return FileDates::dateOf(path); },
        [this](std::optional<qint64> base) { takeBase(base); });
    showDates();
}

void PIDateSeriesDialog::build()
{
    setObjectName(QStringLiteral("DateSeriesDialog"));
    setWindowTitle(tr("Date Series"));
    setWindowModality(Qt::WindowModal);
    m_increment->setRange(-kLargestIncrement, kLargestIncrement);
    m_increment->setAccessibleName(tr("Step"));
    m_increment->setToolTip(tr("Below 0, each photo gets an earlier date than the one before it"));
    m_unit->addItems({tr("seconds"), tr("minutes"), tr("hours"), tr("days")});
    m_unit->setAccessibleName(tr("Unit of the step"));
    for (QLabel *label : {m_first, m_last, m_summary}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
    }
    auto *intro = new QLabel(tr("The first photo's file keeps its date. The file of each further photo gets a date "
                                "that is one step after that of the photo before it."),
                             this);
    intro->setWordWrap(true);
    auto *step = new QHBoxLayout;
    step->addWidget(m_increment);
    step->addWidget(m_unit);
    step->addStretch();
    auto *stepLabel = new QLabel(tr("&Step:"), this);
    stepLabel->setBuddy(m_increment);
    auto *form = new QFormLayout;
    form->addRow(stepLabel, step);
    form->addRow(tr("First photo:"), m_first);
    form->addRow(tr("Last photo:"), m_last);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    buttons->addButton(m_okButton, QDialogButtonBox::AcceptRole);
    m_okButton->setDefault(true);
    m_okButton->setToolTip(tr("Change the dates of the files on disk. This cannot be undone"));
    connect(buttons, &QDialogButtonBox::accepted, this, &PIDateSeriesDialog::redate);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addLayout(form);
    layout->addWidget(m_summary);
    layout->addStretch();
    layout->addWidget(buttons);
    m_increment->setFocus();
    m_increment->selectAll();
    resize(460, sizeHint().height());
}

int PIDateSeriesDialog::whatToChange() const
{
    return m_unit->currentIndex();
}

void PIDateSeriesDialog::setWhatToChange(int unit)
{
    m_unit->setCurrentIndex(unit > 0 && unit < m_unit->count() ? unit : DateSeries::Seconds);
}

int PIDateSeriesDialog::increment() const
{
    return m_increment->value();
}

void PIDateSeriesDialog::setIncrement(int units)
{
    m_increment->setValue(units);
}

void PIDateSeriesDialog::takeBase(std::optional<qint64> base)
{
    m_isBaseRead = true;
    m_base = base;
    showDates();
}

void PIDateSeriesDialog::showDates()
{
    const QList<qsizetype> dated = DateSeries::datedFiles(m_paths);
    m_okButton->setEnabled(m_base && !dated.isEmpty());
    const auto shown = [this](qsizetype place, const std::optional<qint64> &date) {
        constexpr int kWidestName = 220; // pixels; names cannot be wrapped
        const QString name = QVString::lastPathComponent(m_paths.at(place)).simplified();
        return QString(dateText(date) + QStringLiteral(" — ") +
                       fontMetrics().elidedText(name, Qt::ElideMiddle, kWidestName));
    };
    m_first->setText(m_base ? shown(0, m_base) : QString());
    m_last->setText(m_base && !dated.isEmpty() ? shown(dated.last(), series().dateAt(dated.last(), *m_base))
                                               : QString());
    if (!m_isBaseRead)
        m_summary->setText(tr("Reading the date of the first photo's file…"));
    else if (!m_base)
        m_summary->setText(tr("The date of the first photo's file can't be read."));
    else
        m_summary->setText(
            CountText(dated.size(), tr("%n file will get another date"), tr("%n files will get other dates")));
}

void PIDateSeriesDialog::redate()
{
    m_defaults.setValue(kWhat, whatToChange());
    m_defaults.setValue(kHowMuch, increment());
    accept();
}
