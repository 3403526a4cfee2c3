#pragma once

#include <QWidget>

class LibraryActions;
class PIOutlineView;

/// The left pane: the back and forward control, the navigator, and its buttons for new folders and groups.
class NavigatorPane final : public QWidget
{
    Q_OBJECT

public:
    NavigatorPane(PIOutlineView &outline, LibraryActions &actions, QWidget *parent = nullptr);
};
