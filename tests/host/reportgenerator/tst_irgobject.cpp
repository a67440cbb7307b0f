#include "reportgenerator/irgobject.h"
#include "support/testmain.h"
#include "ztbase/exceptions.h"

#include <memory>
#include <type_traits>

using REPORTGENERATOR::IRGObject;

namespace {

/// Keeps a word; raises what the report library raises when it cannot be written.
class Word : public IRGObject
{
public:
    explicit Word(bool* deleted = nullptr)
        : m_deleted(deleted)
    {
    }
    ~Word() override
    {
        if (m_deleted != nullptr)
            *m_deleted = true;
    }

    QString GetXmlString() const override
    {
        if (m_word.isEmpty())
            throw ReportException(QStringLiteral("Word"), QStringLiteral("no word"));
        return QStringLiteral("<Word>%1</Word>").arg(m_word);
    }

    bool SetXmlString(const QString& xml) override
    {
        const bool good = xml.startsWith(QLatin1String("<Word>")) && xml.endsWith(QLatin1String("</Word>"));
        m_word = good ? xml.mid(6, xml.size() - 13) : QString();
        return good;
    }

private:
    bool* m_deleted;
    QString m_word;
};

} // namespace

class TestIRGObject : public QObject
{
    Q_OBJECT

private slots:
    void anObjectIsReadAndWrittenThroughTheInterface()
    {
        const std::unique_ptr<IRGObject> object = std::make_unique<Word>();
        QVERIFY(object->SetXmlString("<Word>fix</Word>"));
        QCOMPARE(object->GetXmlString(), QString("<Word>fix</Word>"));
    }

    void deletingThroughTheInterfaceDeletesTheWholeObject()
    {
        bool deleted = false;
        std::unique_ptr<IRGObject> object = std::make_unique<Word>(&deleted);
        object.reset();
        QVERIFY(deleted);
    }

    void aFailureOfAnObjectIsCaughtByItsTypeAcrossLibraries()
    {
        const std::unique_ptr<IRGObject> object = std::make_unique<Word>();
        try {
            const QString text = object->GetXmlString();
            QFAIL(qPrintable("Unexpectedly written: " + text));
        } catch (const ReportException& exception) {
            QCOMPARE(exception.GetPlace(), QString("Word"));
            QCOMPARE(exception.GetMessage(), QString("no word"));
        }
    }

    void anObjectIsNotCopiedThroughTheInterface()
    {
        static_assert(!std::is_copy_constructible_v<IRGObject> && !std::is_copy_assignable_v<IRGObject>);
        static_assert(std::is_copy_constructible_v<Word>);
        static_assert(std::has_virtual_destructor_v<IRGObject>);
    }
};

DFL_TEST_MAIN_WITH(TestIRGObject, QCoreApplication)
#include "tst_irgobject.moc"
