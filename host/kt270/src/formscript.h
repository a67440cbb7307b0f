#pragma once

#include <QJSEngine>
#include <QObject>
#include <QSet>
#include <QString>

#include <vector>

namespace KT270 {

/// What a script asks of the form: this field enabled or disabled.
struct EnableRequest
{
    QString field;
    bool enable;
};

/// How a run of a script ended.
struct ScriptOutcome
{
    QString error; ///< empty: it ran to its end
    int line = 0;  ///< of the error
    std::vector<EnableRequest> requests;
};

/// The form object as the engine sees it: notes what is asked. Only its functions are handed to scripts, not the object
/// itself with all that Qt objects have.
class FormScriptApi final : public QObject
{
    Q_OBJECT
public:
    FormScriptApi(QJSEngine& engine, QSet<QString> fields)
        : m_engine(engine)
        , m_fields(std::move(fields))
    {
    }

    Q_INVOKABLE void setEnabled(const QString& field, bool enable);

    std::vector<EnableRequest> requests;

private:
    QJSEngine& m_engine;
    const QSet<QString> m_fields;
};

/// A form's script. It sees the objects of the language and "form", whose "setEnabled(field, on)" asks for a field to
/// be enabled or disabled; what is asked is handed out when the script has ended, so no script is ever inside the form.
class FormScript
{
public:
    /// @p fields are the names that setEnabled knows.
    explicit FormScript(QSet<QString> fields);
    FormScript(const FormScript&) = delete;
    FormScript& operator=(const FormScript&) = delete;

    /// Runs @p code, whose first line counts as @p firstLine. What it defines stays. It is ended when it runs longer
    /// than a second.
    ScriptOutcome Run(const QString& code, int firstLine = 1);

private:
    QJSEngine m_engine;
    FormScriptApi m_api;
};

} // namespace KT270
