#include "PIPrintOptionVC.h"

#include "FormatMessage.h"
#include "PrintInfo.h"
#include "PrintLayout.h"
#include "PrintSettings.h"
#include "UserDefaults.h"

#include <QBoxLayout>
#include <QButtonGroup>
#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QSpinBox>

PIPrintOptionVC::PIPrintOptionVC(UserDefaults &defaults, QWidget *parent)
    : QWidget(parent)
    , m_defaults(defaults)
    , m_layouts(new QButtonGroup(this))
    , m_cropMarks(new QCheckBox(tr("Print crop marks"), this))
    , m_scale(new QSpinBox(this))
{
    setWindowTitle(QStringLiteral("Tamsel Photo")); // of its tab in the print dialog
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("Page layout:"), this));
    for (const int choice : {PrintLayout::kProof, PrintLayout::kFillPage, 2, 3, 4, 6, 9, 12}) {
        auto *button = new QRadioButton(layoutName(choice), this);
        button->setChecked(choice == g_printLayout);
        m_layouts->addButton(button);
        m_layouts->setId(button, choice);
        layout->addWidget(button);
        connect(button, &QRadioButton::clicked, this, [this, choice] { changePrintLayout(choice); });
    }
    layout->addSpacing(fontMetrics().height() / 2);
    layout->addWidget(m_cropMarks);
    auto *scaleLabel = new QLabel(tr("&Scale:"), this);
    scaleLabel->setBuddy(m_scale);
    auto *scaleRow = new QHBoxLayout;
    scaleRow->addWidget(scaleLabel);
    scaleRow->addWidget(m_scale);
    scaleRow->addStretch();
    layout->addLayout(scaleRow);
    layout->addStretch();
    m_scale->setRange(qRound(PrintInfo::kLeastScale * 100), qRound(PrintInfo::kMostScale * 100));
    m_scale->setSuffix(tr(" %"));
    m_scale->setSingleStep(5);
    m_scale->setKeyboardTracking(false);
    m_scale->setToolTip(tr("The size of everything on the page: at 50 % a page has room for twice as many columns"));
    m_scale->setValue(qRound(g_printInfo.scale * 100));
    connect(m_scale, &QSpinBox::valueChanged, this, &PIPrintOptionVC::changeScale);
    m_cropMarks->setChecked(g_cropMarks);
    m_cropMarks->setToolTip(tr("Short lines that show where to cut the paper"));
    connect(m_cropMarks, &QCheckBox::clicked, this, &PIPrintOptionVC::changeCropMarks);
}

void PIPrintOptionVC::refresh()
{
    if (QAbstractButton *chosen = m_layouts->button(g_printLayout))
        chosen->setChecked(true);
    m_cropMarks->setChecked(g_cropMarks);
    const QSignalBlocker silent(m_scale);
    m_scale->setValue(qRound(g_printInfo.scale * 100));
}

QString PIPrintOptionVC::layoutName(int layout)
{
    if (layout == PrintLayout::kProof)
        return tr("Proof");
    return layout == PrintLayout::kFillPage ? tr("Fill page") : FormatMessage(tr("%d per page"), {layout});
}

void PIPrintOptionVC::changePrintLayout(int layout)
{
    g_printLayout = layout;
    m_defaults.setValue(kPrintLayout, layout);
    Q_EMIT changed();
}

void PIPrintOptionVC::changeCropMarks(bool on)
{
    g_cropMarks = on;
    m_defaults.setValue(kCropMarks, on);
    Q_EMIT changed();
}

void PIPrintOptionVC::changeScale(int percent)
{
    g_printInfo.scale = percent / 100.0;
    m_defaults.setData(QLatin1String(kPrintInfo), archivedPrintInfo(g_printInfo));
    Q_EMIT changed();
}
