#pragma once

#include <QWidget>

class QAction;

/// Two buttons that lead from the large photo to its neighbours.
class StepControl final : public QWidget
{
    Q_OBJECT

public:
    /// The commands that the buttons stand for.
    StepControl(QAction &previous, QAction &next, QWidget *parent = nullptr);
};
