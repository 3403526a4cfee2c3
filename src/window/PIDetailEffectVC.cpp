#include "PIDetailEffectVC.h"

#include "FilterBackEnd.h"
#include "PIPhoto.h"

#include <QBoxLayout>
#include <QLabel>

namespace {

/// As people know the filter; one that is not at hand goes by the name under which it is stored.
QString effectName(const EffectEntry &effect)
{
    const FilterAttributes *known = filterBackEnd().attributes(effect.filterName());
    const QString name = known ? known->displayName : effect.filterName();
    return name.isEmpty() ? PIDetailEffectVC::tr("Unknown effect") : name;
}

}

PIDetailEffectVC::PIDetailEffectVC(PhotoLibrary &library, const PIDetailController &controller, QWidget *parent)
    : PIDetailBaseVC(library, controller, parent)
    , m_effects(new QLabel(this))
{
    m_effects->setTextFormat(Qt::PlainText);
    m_effects->setWordWrap(true);
    m_effects->setAccessibleName(tr("Effects"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 4, 12, 10);
    layout->addWidget(m_effects);
    selectionChanged();
}

void PIDetailEffectVC::selectionChanged()
{
    QStringList names;
    if (havePhoto()) {
        for (const EffectEntry &effect : photo()->filterDicts())
            names << effectName(effect);
    }
    m_effects->setForegroundRole(names.isEmpty() ? QPalette::PlaceholderText : QPalette::WindowText);
    m_effects->setText(names.isEmpty() && havePhoto() ? tr("None") : names.join(u'\n'));
}
