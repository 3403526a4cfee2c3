#include "PIDetailBaseVC.h"

#include "PIDetailController.h"
#include "PhotoLibrary.h"

PIDetailBaseVC::PIDetailBaseVC(PhotoLibrary &library, const PIDetailController &controller, QWidget *parent)
    : QWidget(parent)
    , m_library(library)
    , m_controller(&controller)
    , m_updateObserver(library.notifications().observe(kUpdateDetailNotification,
                                                       [this](const NotificationObject &) { selectionChanged(); }))
{}

const std::shared_ptr<PIPhoto> &PIDetailBaseVC::photo() const
{
    static const std::shared_ptr<PIPhoto> none;
    return m_controller ? m_controller->photo() : none;
}

bool PIDetailBaseVC::havePhoto() const
{
    return photo() != nullptr;
}

bool PIDetailBaseVC::missingFile() const
{
    return !havePhoto() || photo()->isFileLost();
}
