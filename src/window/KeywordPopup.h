#pragma once

class KeywordVocabulary;
class QToolButton;

/// Fills a pull-down menu of keywords: the button is titled "+" and has one item per keyword in display order, with the
/// keyword as its data.
void UpdateKeyWordPopup(QToolButton &popup, const KeywordVocabulary &vocabulary);
