#include "PIAddKeywordDialog.h"

#include "GiveAlert.h"
#include "KeywordCompleter.h"
#include "KeywordEdits.h"
#include "KeywordPopup.h"
#include "LibraryEditor.h"
#include "LibraryView.h"
#include "PhotoEdits.h"
#include "PhotoLibrary.h"
#include "TextForPeople.h"

#include <QBoxLayout>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>

void PIAddKeywordDialog::addKeyword(LibraryEditor &editor, QWidget &inWindow)
{
    if (PhotoEdits(editor).selectedPhotos().isEmpty()) {
        Beep();
        return;
    }
    auto *dialog = new PIAddKeywordDialog(editor, &inWindow);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

PIAddKeywordDialog::PIAddKeywordDialog(LibraryEditor &editor, QWidget *parent)
    : QDialog(parent)
    , m_editor(editor)
    , m_folder(editor.view().shownFolder())
    , m_photos(PhotoEdits(editor).selectedPhotos())
    , m_keyword(new QLineEdit(this))
    , m_keywordPopup(new QToolButton(this))
{
    setObjectName(QStringLiteral("PIAddKeywordDialog"));
    setWindowTitle(tr("Add Keyword"));
    setWindowModality(Qt::WindowModal);
    UpdateKeyWordPopup(*m_keywordPopup, editor.library().keywords());
    m_keywordPopup->setEnabled(!m_keywordPopup->menu()->isEmpty());
    connect(m_keywordPopup->menu(), &QMenu::triggered, this,
            [this](const QAction *item) { addFromList(item->data().toString()); });
    auto *completer = new KeywordCompleter(editor.library().keywords(), *m_keyword);
    connect(m_keyword, &QLineEdit::textEdited, completer, &KeywordCompleter::offer);
    build();
}

void PIAddKeywordDialog::build()
{
    m_keyword->setToolTip(tr("Blanks part keywords. Put several words that belong together in quotes"));
    m_keyword->setAccessibleName(tr("Keyword"));
    m_keywordPopup->setToolTip(tr("Choose one of the library's keywords"));
    m_keywordPopup->setAccessibleName(tr("Choose keyword"));
    m_keywordPopup->setFocusPolicy(Qt::StrongFocus);
    auto *label = new QLabel(question(), this);
    label->setBuddy(m_keyword);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    QPushButton *add = buttons->addButton(tr("&Add"), QDialogButtonBox::AcceptRole);
    add->setDefault(true);
    add->setToolTip(tr("Photos whose keywords contain this text already stay as they are"));
    connect(buttons, &QDialogButtonBox::accepted, this, &PIAddKeywordDialog::apply);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *row = new QHBoxLayout;
    row->addWidget(m_keyword, 1);
    row->addWidget(m_keywordPopup);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addLayout(row);
    layout->addStretch();
    layout->addWidget(buttons);
    resize(400, sizeHint().height());
    m_keyword->setFocus();
}

QString PIAddKeywordDialog::question() const
{
    return CountText(m_photos.size(), tr("&Keyword for the selected photo:"),
                     tr("&Keyword for the %n selected photos:"));
}

void PIAddKeywordDialog::addFromList(const QString &keyword)
{
    m_keyword->setText(keyword);
    m_keyword->setFocus();
}

void PIAddKeywordDialog::apply()
{
    if (KeywordEdits::addKeyword(m_editor, m_photos, m_folder, m_keyword->text()))
        accept();
    else
        Beep();
}
