#pragma once

#include <QPlainTextEdit>

/// A text that wraps within a field that grows with it, but has no line breaks. Enter, and whatever takes the focus,
/// ends the editing; Escape gives the stored text back.
class WordField final : public QPlainTextEdit
{
    Q_OBJECT

public:
    /// Never lower than `fewestLines`.
    explicit WordField(int fewestLines, QWidget *parent = nullptr);

    /// What the field shows, and gives back after Escape. What is being typed stays.
    void setStoredText(const QString &text);
    [[nodiscard]] bool isEdited() const { return document()->isModified(); }
    /// On one line.
    [[nodiscard]] QString text() const;
    /// As Enter does it; nothing when nothing was typed.
    void endEditing();
    /// Takes the focus, ready for a word behind those that are there.
    void continueTyping();

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The user has changed the text and may go on.
    void textEdited();
    /// The user has changed the text and finished.
    void editingEnded();

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    [[nodiscard]] bool canInsertFromMimeData(const QMimeData *source) const override;
    void insertFromMimeData(const QMimeData *source) override;

private:
    void showStoredText();
    void fitHeight();
    [[nodiscard]] int heightFor(int lines) const;

    int m_fewestLines;
    QString m_storedText;
};
