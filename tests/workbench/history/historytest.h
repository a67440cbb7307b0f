#pragma once

#include <QSqlDatabase>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

/// What tests of the store have in common: a folder of its own for each test, and no connection left behind by any.
class HistoryTest : public QObject
{
    Q_OBJECT

protected:
    [[nodiscard]] QString folderPath() const { return m_folder->path(); }
    [[nodiscard]] QString inFolder(const QString& name) const { return m_folder->filePath(name); }
    /// Of the store.
    [[nodiscard]] QString path() const { return inFolder(QStringLiteral("history.sqlite")); }

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
    }

    void cleanup() { QVERIFY2(QSqlDatabase::connectionNames().isEmpty(), "a connection is left behind"); }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
};
