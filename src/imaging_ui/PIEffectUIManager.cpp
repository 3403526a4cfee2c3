#include "PIEffectUIManager.h"

#include "ColorWell.h"
#include "NumberControl.h"
#include "PIPhoto.h"
#include "QVCoordinateView.h"

#include <QBoxLayout>
#include <QFormLayout>
#include <QLabel>
#include <QStyle>
#include <QToolButton>

#include <algorithm>

namespace {

const QLatin1String kImageClass("CIImage");

/// What a control shows of an input that the entry has no value for.
EffectValue shownValue(const EffectEntry &entry, const FilterInput &input)
{
    if (const EffectValue *value = entry.value(input.name))
        return *value;
    return input.identity.value_or(input.defaultValue.value_or(0.0));
}

QToolButton *smallButton(QStyle::StandardPixmap icon, const QString &toolTip, QWidget *parent)
{
    auto *button = new QToolButton(parent);
    button->setAutoRaise(true);
    button->setIcon(parent->style()->standardIcon(icon));
    button->setToolTip(toolTip);
    button->setAccessibleName(toolTip);
    return button;
}

}

PIEffectUIManager::PIEffectUIManager(QWidget &view, const FilterCatalogue &catalogue, EffectDelegate &delegate)
    : QObject(&view)
    , m_view(view)
    , m_catalogue(catalogue)
    , m_edits(catalogue, delegate)
{
    auto *layout = new QVBoxLayout(&view);
    layout->setContentsMargins(0, 0, 0, 0);
}

void PIEffectUIManager::setPicture(const QImage &picture)
{
    m_picture = picture;
    for (QVCoordinateView *picker : std::as_const(m_pickers))
        picker->setPicture(picture);
}

/// One of the controls may be the sender of what led here, so that they go when it has returned.
void PIEffectUIManager::removeControls()
{
    if (m_body) {
        m_body->hide();
        m_body->deleteLater();
    }
    m_body = nullptr;
    m_filters.clear();
    m_show.clear();
    m_pickers.clear();
}

void PIEffectUIManager::addFilterControl(const EffectEntry &values)
{
    if (!m_body) {
        m_body = new QWidget(&m_view);
        auto *layout = new QVBoxLayout(m_body);
        layout->setContentsMargins(0, 0, 0, 0);
        m_view.layout()->addWidget(m_body);
    }
    const bool isSecond = m_filters.contains(values.filterName());
    m_filters << values.filterName();
    auto *form = new QFormLayout;
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    static_cast<QVBoxLayout *>(m_body->layout())->addLayout(form);
    if (m_includeCommonControls)
        addCommonControls(values, *form);
    const FilterAttributes *filter = isSecond ? nullptr : m_catalogue.description(values.filterName());
    const int filterTag = m_catalogue.tagForFilter(values.filterName());
    for (int i = 0; filter && i < filter->inputs.size(); ++i) {
        const FilterInput &input = filter->inputs.at(i);
        if (QWidget *control = controlFor(input, FilterCatalogue::controlTag(filterTag, i)))
            form->addRow(input.displayName + u':', control);
    }
    if (!isSecond)
        showValues(values);
}

void PIEffectUIManager::addCommonControls(const EffectEntry &entry, QFormLayout &form)
{
    const QString name = entry.filterName();
    const FilterAttributes *filter = m_catalogue.description(name);
    auto *title = new QLabel(m_body);
    title->setTextFormat(Qt::PlainText);
    title->setText(m_catalogue.displayName(name));
    title->setWordWrap(true);
    auto *row = new QHBoxLayout;
    row->addWidget(title, 1);
    if (filter) {
        auto *reset = smallButton(QStyle::SP_BrowserReload, tr("Reset this effect to the default settings"), m_body);
        connect(reset, &QToolButton::clicked, this,
                [this, name] { m_edits.revertEffect(m_catalogue.tagForFilter(name)); });
        row->addWidget(reset);
    }
    auto *remove = smallButton(QStyle::SP_TitleBarCloseButton, tr("Remove this effect"), m_body);
    connect(remove, &QToolButton::clicked, this, [this, name] { m_edits.deleteEffect(name); });
    row->addWidget(remove);
    form.addRow(row);
}

/// Null for an input that there are no controls for.
QWidget *PIEffectUIManager::controlFor(const FilterInput &input, int controlTag)
{
    if (input.attributeClass == QLatin1String("NSNumber"))
        return numberControl(input, controlTag);
    if (input.attributeClass == QLatin1String("CIColor"))
        return colorWell(input, controlTag);
    return input.attributeClass == QLatin1String("CIVector") ? coordinateView(input, controlTag) : nullptr;
}

QWidget *PIEffectUIManager::numberControl(const FilterInput &input, int controlTag)
{
    using TextField = NumberControl::TextField;
    auto *number = new NumberControl(input, m_includeTextFields ? TextField::Yes : TextField::No, m_body);
    connect(number, &NumberControl::valueChanged, this,
            [this, controlTag](double value) { changed(controlTag, value); });
    connect(number, &NumberControl::editingFinished, this, &PIEffectUIManager::changeEnded);
    m_show.insert(controlTag, [number](const EffectValue &value) {
        if (const auto *shown = std::get_if<double>(&value))
            number->setValue(*shown);
    });
    return number;
}

QWidget *PIEffectUIManager::colorWell(const FilterInput &input, int controlTag)
{
    auto *well = new ColorWell(input.displayName, m_body);
    connect(well, &ColorWell::colorChanged, this,
            [this, controlTag](const EffectColor &color) { changed(controlTag, color); });
    connect(well, &ColorWell::editingFinished, this, &PIEffectUIManager::changeEnded);
    m_show.insert(controlTag, [well](const EffectValue &value) {
        if (const auto *shown = std::get_if<EffectColor>(&value))
            well->setColor(*shown);
    });
    return well;
}

QWidget *PIEffectUIManager::coordinateView(const FilterInput &input, int controlTag)
{
    auto *picker = new QVCoordinateView(input.displayName, m_body);
    picker->setPicture(m_picture);
    m_pickers.append(picker);
    connect(picker, &QVCoordinateView::coordinateChanged, this,
            [this, controlTag](QPointF place) { changed(controlTag, place); });
    connect(picker, &QVCoordinateView::editingFinished, this, &PIEffectUIManager::changeEnded);
    m_show.insert(controlTag, [picker](const EffectValue &value) {
        if (const auto *shown = std::get_if<QPointF>(&value))
            picker->setCoordinate(*shown);
    });
    return picker;
}

void PIEffectUIManager::showValues(const EffectEntry &entry)
{
    const FilterAttributes *filter = m_catalogue.description(entry.filterName());
    const int filterTag = m_catalogue.tagForFilter(entry.filterName());
    for (int i = 0; filter && i < filter->inputs.size(); ++i) {
        if (const auto show = m_show.value(FilterCatalogue::controlTag(filterTag, i)))
            show(shownValue(entry, filter->inputs.at(i)));
    }
}

void PIEffectUIManager::changed(int controlTag, const EffectValue &value)
{
    if (m_edits.changeValue(controlTag, value))
        return;
    const QString name = m_catalogue.filterForTag(FilterCatalogue::filterTagOf(controlTag));
    if (const EffectEntry *entry = m_edits.entry(name))
        showValues(*entry); // refused: as it was
}

void PIEffectUIManager::setFilterUIFrom(const EffectChain &values)
{
    const EffectChain shown = values.first(std::min(values.size(), kMostFilters));
    QStringList filters;
    for (const EffectEntry &entry : shown)
        filters << entry.filterName();
    if (filters != m_filters) {
        removeControls();
        for (const EffectEntry &entry : shown)
            addFilterControl(entry);
        return;
    }
    for (qsizetype i = 0; i < shown.size(); ++i) {
        if (filters.indexOf(filters.at(i)) == i) // of several, the first is the one that controls change
            showValues(shown.at(i));
    }
}
