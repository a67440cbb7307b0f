#include "app/parametersetview.h"

#include "filework/filework.h"

#include "guicomponentbase/guicomponentcommon.h"

#include <QDir>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStackedWidget>

#include <utility>

namespace workbench {

using VelmarGui::GuiComponentCommon;
using VelmarGui::ParameterSetStore;

ParameterSetView::ParameterSetView(GuiComponentCommon& common, const QString& component, const QString& set,
                                   bool isOffline, const QString& folder, QWidget* parent)
    : QWidget(parent)
    , m_common(&common)
    , m_component(component)
    , m_set(set)
    , m_isOffline(isOffline)
    , m_store(folder)
    , m_files(new FileWork(this))
{
    setObjectName(QStringLiteral("ParameterSetView"));
    makeFields();
    layOut();
    connectCommon();
    refreshNames();
    refreshText();
    setModified(false);
}

void ParameterSetView::makeFields()
{
    m_list = new QListWidget;
    m_list->setObjectName(QStringLiteral("ParameterSetNames"));
    m_list->setAccessibleName(tr("Parameter sets"));
    m_emptyText = new QLabel(tr("There are no parameter sets yet. Enter a name below and press Save to keep the "
                                "component's settings under it."));
    m_emptyText->setObjectName(QStringLiteral("NoParameterSets"));
    m_emptyText->setWordWrap(true);
    m_emptyText->setAlignment(Qt::AlignCenter);
    m_names = new QStackedWidget;
    m_names->addWidget(m_list);
    m_names->addWidget(m_emptyText);

    m_nameEdit = new QLineEdit;
    m_nameEdit->setObjectName(QStringLiteral("ParameterSetName"));
    m_stateText = new QLabel;
    m_stateText->setObjectName(QStringLiteral("ParameterSetState"));
    m_stateText->setWordWrap(true);
    m_text = new QPlainTextEdit;
    m_text->setObjectName(QStringLiteral("ParameterSetText"));
    m_text->setAccessibleName(tr("The component's settings"));
    m_text->setReadOnly(true);
    m_text->setTabChangesFocus(true);
    m_text->setLineWrapMode(QPlainTextEdit::NoWrap);
}

void ParameterSetView::layOut()
{
    auto* const nameLabel = new QLabel(tr("Na&me:"));
    nameLabel->setBuddy(m_nameEdit);
    auto* const layout = new QGridLayout(this);
    const auto addButton = [&](const QString& text, const char* name, const QString& toolTip, int row, int column,
                               void (ParameterSetView::*act)()) {
        auto* const button = new QPushButton(text);
        button->setObjectName(QLatin1String(name));
        button->setToolTip(toolTip);
        connect(button, &QPushButton::clicked, this, act);
        layout->addWidget(button, row, column);
        return button;
    };
    layout->addWidget(m_names, 0, 0, 3, 2);
    m_loadButton = addButton(tr("&Load"), "LoadParameterSet", tr("Hand the selected parameter set to the component"), 0,
                             2, &ParameterSetView::load);
    m_deleteButton = addButton(tr("Dele&te …"), "DeleteParameterSet", tr("Delete the selected parameter set"), 1, 2,
                               &ParameterSetView::askToDelete);
    m_renameButton =
        addButton(tr("Re&name"), "RenameParameterSet", tr("Give the selected parameter set the name in the field"), 2,
                  2, &ParameterSetView::rename);
    layout->addWidget(nameLabel, 3, 0);
    layout->addWidget(m_nameEdit, 3, 1);
    m_saveButton =
        addButton(tr("&Save"), "SaveParameterSet", tr("Keep the component's settings under the name in the field"), 3,
                  2, &ParameterSetView::save);
    layout->addWidget(m_stateText, 0, 3);
    m_requestButton =
        addButton(tr("Re&quest"), "RequestParameterSet",
                  tr("Ask the component for its settings as they are edited now"), 0, 4, &ParameterSetView::request);
    layout->addWidget(m_text, 1, 3, 3, 2);
    layout->setColumnStretch(1, 1);
    layout->setColumnStretch(3, 1);

    connect(m_list, &QListWidget::currentTextChanged, m_nameEdit, &QLineEdit::setText);
    connect(m_list, &QListWidget::currentTextChanged, this, &ParameterSetView::updateButtons);
    connect(m_list, &QListWidget::itemActivated, this, &ParameterSetView::load);
    connect(m_nameEdit, &QLineEdit::textChanged, this, &ParameterSetView::updateButtons);
    connect(m_nameEdit, &QLineEdit::returnPressed, m_saveButton, &QPushButton::click);
}

void ParameterSetView::connectCommon()
{
    connect(m_common, &GuiComponentCommon::si_parameterSetUpdated, this,
            [this](const QString& component, const QString& set) {
                if (component != m_component || set != m_set)
                    return;
                refreshText();
                setModified(false);
            });
    connect(m_common, &GuiComponentCommon::si_parametersModified, this, [this] { setModified(true); });
    connect(m_common, &QObject::destroyed, this, &ParameterSetView::updateButtons);
}

void ParameterSetView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    refreshNames(); // files may have come or gone meanwhile
}

void ParameterSetView::refreshNames()
{
    m_files->run([store = m_store] { return store.GetNames(); },
                 [this](const QStringList& names) {
                     // A name that is being typed is not taken away.
                     const QString edited = m_nameEdit->text();
                     const bool isTyped = edited != selectedName();
                     showNames(names, selectedName());
                     if (isTyped)
                         m_nameEdit->setText(edited);
                 });
}

void ParameterSetView::showNames(const QStringList& names, const QString& current)
{
    m_list->clear();
    m_list->addItems(names);
    const QList<QListWidgetItem*> found = m_list->findItems(current, Qt::MatchExactly | Qt::MatchCaseSensitive);
    m_list->setCurrentItem(found.isEmpty() ? m_list->item(0) : found.first());
    m_names->setCurrentWidget(m_list->count() > 0 ? static_cast<QWidget*>(m_list) : m_emptyText);
    updateButtons();
}

void ParameterSetView::refreshText()
{
    const QString xml = m_common ? m_common->GetParameterSet(m_component, m_set) : QString();
    m_text->setPlainText(QString(xml).replace(QLatin1String("><"), QLatin1String(">\n<")));
    if (xml.isEmpty())
        m_text->setPlainText(tr("The component has not reported any settings."));
}

void ParameterSetView::setModified(bool modified)
{
    m_isModified = modified;
    m_stateText->setText(modified ? tr("Edited, not reported yet") : tr("Reported by the component"));
    updateButtons();
}

void ParameterSetView::updateButtons()
{
    const bool isSelected = !selectedName().isEmpty();
    m_loadButton->setEnabled(m_common && isSelected);
    m_deleteButton->setEnabled(isSelected);
    m_renameButton->setEnabled(isSelected && !editedName().isEmpty() && editedName() != selectedName());
    m_saveButton->setEnabled(m_common && !editedName().isEmpty());
    m_requestButton->setEnabled(m_common && m_isOffline);
    m_requestButton->setVisible(m_isOffline); // online every edit is reported at once
}

QString ParameterSetView::selectedName() const
{
    const QListWidgetItem* const item = m_list->currentItem();
    return item != nullptr ? item->text() : QString();
}

QString ParameterSetView::editedName() const
{
    return m_nameEdit->text().trimmed();
}

template <typename Work, typename Answer>
void ParameterSetView::start(Work work, Answer answer)
{
    if (m_isBusy) {
        emit message(tr("The last request for a parameter set is still being worked on."));
        return;
    }
    m_isBusy = true;
    m_files->run(std::move(work), [this, answer](const auto& result) {
        m_isBusy = false;
        answer(result);
    });
}

template <typename Change>
void ParameterSetView::change(Change change, const QString& current, const QString& done)
{
    start(
        [store = m_store, change] {
            const ParameterSetStore::Error error = change(store);
            return std::make_pair(error, store.GetNames());
        },
        [this, current, done](const std::pair<ParameterSetStore::Error, QStringList>& outcome) {
            const auto& [error, names] = outcome;
            if (error.isEmpty())
                showNames(names, current);
            emit message(error.isEmpty() ? done : error);
        });
}

void ParameterSetView::load()
{
    const QString name = selectedName();
    if (!m_common || name.isEmpty())
        return;
    start([store = m_store, name] { return store.Load(name); },
          [this, name](const ParameterSetStore::Loaded& loaded) { handOver(name, loaded); });
}

void ParameterSetView::handOver(const QString& name, const ParameterSetStore::Loaded& loaded)
{
    if (!loaded.xml) {
        emit message(loaded.error);
        return;
    }
    const QPointer<ParameterSetView> alive(this);
    const bool isTaken = m_common && m_common->SetParameterSet(m_component, m_set, *loaded.xml);
    if (!alive)
        return;
    if (isTaken) {
        refreshText();
        setModified(false);
    }
    emit message(isTaken ? tr("Parameter set \"%1\" is loaded.").arg(name)
                         : tr("The component has no parameter set \"%1\" to load into.").arg(m_set));
}

void ParameterSetView::save()
{
    const QString name = editedName();
    if (!m_common || name.isEmpty())
        return;
    start([store = m_store, name] { return store.Contains(name); },
          [this, name](bool isTaken) {
              if (isTaken) {
                  ask(tr("There is a parameter set \"%1\" already. Replace it?").arg(name), tr("&Replace"),
                      &ParameterSetView::saveAs, name);
              } else {
                  saveAs(name);
              }
          });
}

void ParameterSetView::saveAs(const QString& name)
{
    const QPointer<ParameterSetView> alive(this);
    if (m_isOffline && m_isModified)
        request();
    if (!alive || !m_common)
        return;
    const QString xml = m_common->GetParameterSet(m_component, m_set);
    if (xml.isEmpty()) {
        emit message(tr("The component has not reported any settings that could be saved."));
        return;
    }
    change([name, xml](const ParameterSetStore& store) { return store.Save(name, xml); }, name,
           tr("Parameter set \"%1\" is saved.").arg(name));
}

void ParameterSetView::rename()
{
    const QString name = selectedName();
    const QString newName = editedName();
    change([name, newName](const ParameterSetStore& store) { return store.Rename(name, newName); }, newName,
           tr("The parameter set is called \"%1\" now.").arg(newName));
}

void ParameterSetView::askToDelete()
{
    const QString name = selectedName();
    ask(tr("Delete the parameter set \"%1\"?").arg(name), tr("&Delete"), &ParameterSetView::deleteSet, name);
}

void ParameterSetView::deleteSet(const QString& name)
{
    change([name](const ParameterSetStore& store) { return store.Delete(name); }, {},
           tr("Parameter set \"%1\" is deleted.").arg(name));
}

void ParameterSetView::request()
{
    if (m_common)
        emit m_common->si_parametersRequested();
}

/// Opened, not executed: the view may go while the box is open.
void ParameterSetView::ask(const QString& question, const QString& button,
                           void (ParameterSetView::*act)(const QString&), const QString& name)
{
    auto* const box = new QMessageBox(QMessageBox::Question, tr("Parameter sets"), question, QMessageBox::Cancel, this);
    box->setTextFormat(Qt::PlainText); // the names of files are in it
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setDefaultButton(QMessageBox::Cancel);
    const QAbstractButton* const yes = box->addButton(button, QMessageBox::AcceptRole);
    connect(yes, &QAbstractButton::clicked, this, [this, act, name] { (this->*act)(name); });
    box->open();
}

} // namespace workbench
