#pragma once

#include "PIDetailBaseVC.h"

class QLabel;

/// The effects section: the names of the photo's effects in the order of their application.
class PIDetailEffectVC final : public PIDetailBaseVC
{
    Q_OBJECT

public:
    PIDetailEffectVC(PhotoLibrary &library, const PIDetailController &controller, QWidget *parent = nullptr);

protected:
    void selectionChanged() override;

private:
    QLabel *m_effects;
};
