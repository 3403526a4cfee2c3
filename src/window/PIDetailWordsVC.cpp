#include "PIDetailWordsVC.h"

#include "DetailEdits.h"
#include "KeywordCompleter.h"
#include "KeywordPopup.h"
#include "LibraryEditor.h"
#include "LibraryNotifications.h"
#include "PhotoLibrary.h"
#include "WordField.h"

#include <QFormLayout>
#include <QMenu>
#include <QSet>
#include <QTimer>
#include <QToolButton>

#include <chrono>

using namespace std::chrono_literals;

PIDetailWordsVC::PIDetailWordsVC(LibraryEditor &editor, const PIDetailController &controller, QWidget *parent)
    : PIDetailBaseVC(editor.library(), controller, parent)
    , m_editor(editor)
    , m_captionField(new WordField(2, this))
    , m_keywordField(new WordField(2, this))
    , m_keywordPopup(new QToolButton(this))
    , m_keywordsObserver(library().notifications().observe(
          kKeywordsNotification, [this](const NotificationObject &) { updateKeywordPopup(); }))
{
    UpdateKeyWordPopup(*m_keywordPopup, {});
    build();
    for (WordField *field : {m_captionField, m_keywordField})
        connect(field, &WordField::editingEnded, this, [this, field] { controlTextDidEndEditing(*field); });
    auto *completer = new KeywordCompleter(library().keywords(), *m_keywordField);
    connect(m_keywordField, &WordField::textEdited, completer, &KeywordCompleter::offer);
    QMenu *menu = m_keywordPopup->menu();
    connect(menu, &QMenu::triggered, this, [this](const QAction *item) { addKeyword(item->data().toString()); });
    connect(menu, &QMenu::aboutToShow, this, [this, menu] { offerMissingKeywords(*menu); });
    QTimer::singleShot(500ms, this, &PIDetailWordsVC::updateKeywordPopup);
    selectionChanged();
}

/// A field that goes while it has the focus says that its text is finished.
PIDetailWordsVC::~PIDetailWordsVC()
{
    m_captionField->disconnect(this);
    m_keywordField->disconnect(this);
}

void PIDetailWordsVC::build()
{
    m_captionField->setToolTip(tr("The photo's caption. The file stays as it is"));
    m_captionField->setAccessibleName(tr("Caption"));
    m_keywordField->setToolTip(tr("Words that describe the photo. Put several words that belong together in quotes"));
    m_keywordField->setAccessibleName(tr("Keywords"));
    m_keywordPopup->setToolTip(tr("Give the photo one of the library's keywords"));
    m_keywordPopup->setAccessibleName(tr("Add keyword"));

    auto *keywords = new QHBoxLayout;
    keywords->addWidget(m_keywordField, 1);
    keywords->addWidget(m_keywordPopup, 0, Qt::AlignTop);
    auto *form = new QFormLayout(this);
    form->setContentsMargins(12, 4, 12, 10);
    form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(tr("Caption:"), m_captionField);
    form->addRow(tr("Keywords:"), keywords);
}

PIDetailWordsVC::ActiveField PIDetailWordsVC::activeWordField() const
{
    if (m_captionField->hasFocus())
        return ActiveField::Caption;
    return m_keywordField->hasFocus() ? ActiveField::Keywords : ActiveField::None;
}

void PIDetailWordsVC::setActiveWordField(ActiveField field)
{
    if (field == ActiveField::Caption)
        m_captionField->setFocus();
    else if (field == ActiveField::Keywords)
        m_keywordField->continueTyping();
}

void PIDetailWordsVC::endEditing()
{
    m_captionField->endEditing();
    m_keywordField->endEditing();
}

void PIDetailWordsVC::selectionChanged()
{
    if (photo() != m_shown)
        endEditing(); // the fields still mean the photo before
    m_shown = photo();
    m_captionField->setEnabled(havePhoto());
    m_keywordField->setEnabled(havePhoto());
    m_keywordPopup->setEnabled(havePhoto() && !m_keywordPopup->menu()->isEmpty());
    m_captionField->setStoredText(havePhoto() ? photo()->caption() : QString());
    m_keywordField->setStoredText(havePhoto() ? photo()->keywordList(library().keywords()) : QString());
}

void PIDetailWordsVC::updateKeywordPopup()
{
    UpdateKeyWordPopup(*m_keywordPopup, library().keywords());
    m_keywordPopup->setEnabled(havePhoto() && !m_keywordPopup->menu()->isEmpty());
}

/// Nothing is to be had twice.
void PIDetailWordsVC::offerMissingKeywords(const QMenu &menu) const
{
    QSet<QString> had;
    for (const quint64 index : photo()->keywordIndexes())
        had.insert(library().keywords().words().value(static_cast<qsizetype>(index)));
    for (QAction *item : menu.actions())
        item->setEnabled(!had.contains(item->data().toString()));
}

void PIDetailWordsVC::addKeyword(const QString &keyword)
{
    endEditing();
    if (havePhoto())
        DetailEdits::addKeyword(m_editor, photo(), keyword);
}

void PIDetailWordsVC::controlTextDidEndEditing(WordField &field)
{
    const auto edited = m_shown;
    if (!edited)
        return;
    if (&field == m_keywordField)
        DetailEdits::setKeywords(m_editor, edited, field.text());
    else if (DetailEdits::setCaption(m_editor, edited, field.text()) && edited == photo())
        library().notifications().post(kSelectNotification, edited);
    if (edited == photo())
        selectionChanged(); // also when it was refused, or says the same in other words
}
