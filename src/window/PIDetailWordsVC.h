#pragma once

#include "PIDetailBaseVC.h"

class LibraryEditor;
class QMenu;
class QToolButton;
class WordField;

/// The words section: the photo's caption and keywords. What is typed belongs to the photo that was shown when it was
/// typed, whatever is selected by the time the editing ends.
class PIDetailWordsVC final : public PIDetailBaseVC
{
    Q_OBJECT

public:
    /// Both outlive the section.
    PIDetailWordsVC(LibraryEditor &editor, const PIDetailController &controller, QWidget *parent = nullptr);
    ~PIDetailWordsVC() override;

    enum class ActiveField { None = 0, Caption = 1, Keywords = 2 };
    /// The field that is being edited.
    [[nodiscard]] ActiveField activeWordField() const;
    /// Moves the typing focus to that field.
    void setActiveWordField(ActiveField field);
    /// What has been typed so far is taken.
    void endEditing();

protected:
    void selectionChanged() override;

private:
    void build();
    void updateKeywordPopup();
    void offerMissingKeywords(const QMenu &menu) const;
    void addKeyword(const QString &keyword);
    void controlTextDidEndEditing(WordField &field);

    LibraryEditor &m_editor;
    std::shared_ptr<PIPhoto> m_shown; ///< whose words stand in the fields
    WordField *m_captionField;
    WordField *m_keywordField;
    QToolButton *m_keywordPopup;
    NotificationCenter::Observer m_keywordsObserver;
};
