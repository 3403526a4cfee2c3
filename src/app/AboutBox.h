#pragma once

class QWidget;

/// Shows name, version and purpose of the program.
void showAboutBox(QWidget &parent);
