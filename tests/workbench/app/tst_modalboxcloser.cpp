#include "app/modalboxcloser.h"

#include "support/testmain.h"

#include <QDialog>
#include <QMessageBox>

using workbench::ModalBoxCloser;

class TestModalBoxCloser : public QObject
{
    Q_OBJECT
private slots:
    void aWarningIsClosedAndItsTextReportedAsPlainText();
    void anOtherModalDialogIsRejected();
    void aBoxOpenedByTheReportIsClosedToo();
    void windowsThatBlockNobodyStayOpen();
    void aBoxThatGoesByItselfIsLeftAlone();
};

void TestModalBoxCloser::aWarningIsClosedAndItsTextReportedAsPlainText()
{
    ModalBoxCloser closer;
    QSignalSpy closed(&closer, &ModalBoxCloser::closed);
    QMessageBox::warning(nullptr, "Warning", "Locate Type <b>History</b> is<br>selected");
    QCOMPARE(closed.count(), 1);
    QCOMPARE(closed[0][0].toString(), QStringLiteral("Warning: Locate Type History is selected"));
}

void TestModalBoxCloser::anOtherModalDialogIsRejected()
{
    ModalBoxCloser closer;
    QSignalSpy closed(&closer, &ModalBoxCloser::closed);
    QDialog dialog;
    dialog.setWindowTitle("Choose");
    QCOMPARE(dialog.exec(), int(QDialog::Rejected));
    QCOMPARE(closed.count(), 1);
    QCOMPARE(closed[0][0].toString(), QStringLiteral("Choose"));
}

void TestModalBoxCloser::aBoxOpenedByTheReportIsClosedToo()
{
    ModalBoxCloser closer;
    int reports = 0;
    connect(&closer, &ModalBoxCloser::closed, this, [&reports] {
        if (++reports == 1)
            QMessageBox::warning(nullptr, "Second", "text");
    });
    QMessageBox::warning(nullptr, "First", "text");
    QCOMPARE(reports, 2);
}

void TestModalBoxCloser::windowsThatBlockNobodyStayOpen()
{
    ModalBoxCloser closer;
    QSignalSpy closed(&closer, &ModalBoxCloser::closed);
    QWidget window;
    window.show();
    QDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCoreApplication::processEvents();
    QVERIFY(window.isVisible());
    QVERIFY(dialog.isVisible());
    QCOMPARE(closed.count(), 0);
}

void TestModalBoxCloser::aBoxThatGoesByItselfIsLeftAlone()
{
    ModalBoxCloser closer;
    QSignalSpy closed(&closer, &ModalBoxCloser::closed);
    {
        QDialog dialog;
        dialog.setModal(true);
        dialog.show();
    }
    QCoreApplication::processEvents();
    QCOMPARE(closed.count(), 0);
}

DFL_TEST_MAIN(TestModalBoxCloser)
#include "tst_modalboxcloser.moc"
