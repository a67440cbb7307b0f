#include "support/freshtree.h"
#include "support/testmain.h"
#include "valueframework/detail/flattable.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valueselection.h"

#include <QMap>

#include <cstdint>
#include <memory>
#include <random>
#include <utility>

using values::detail::FlatTable;

namespace {

struct NumberSlot
{
    int number = -1;
    int content = 0;
    uint hash = 0;

    [[nodiscard]] bool IsFree() const { return number < 0; }
    [[nodiscard]] uint GetHash() const { return hash; }
};

auto isNumber(int number)
{
    return [number](const NumberSlot& slot) { return slot.number == number; };
}

uint spreadHash(int number)
{
    return static_cast<uint>(number) * 0x9E3779B9U;
}

/// All numbers at one of four places, the last slot of any table among them: rows run over its end.
uint crowdedHash(int number)
{
    return static_cast<uint>(number % 4) * 0x55555555U;
}

int roll(std::mt19937& dice, int count)
{
    return static_cast<int>(dice() % static_cast<std::uint32_t>(count));
}

/// The form in which two paths are the same when they are.
QString plainForm(const QString& path)
{
    return QLatin1Char('/') + path.split(QLatin1Char('/'), Qt::SkipEmptyParts).join(QLatin1Char('/')) +
           (path.endsWith(QLatin1Char('/')) ? QStringLiteral("/") : QString());
}

QString anyPath(std::mt19937& dice)
{
    static const QStringList names{QStringLiteral("GUI"),         QStringLiteral("Level"), QStringLiteral("a b"),
                                   QStringLiteral("Größe µ"),     QStringLiteral("電波"),  QStringLiteral("x"),
                                   QStringLiteral("LongName%1%2")};
    static const QStringList separators{QStringLiteral("/"), QStringLiteral("/"), QStringLiteral("/"),
                                        QStringLiteral("//"), QStringLiteral("///")};
    QString path = roll(dice, 3) == 0 ? QString() : separators[roll(dice, separators.size())];
    for (int depth = 1 + roll(dice, 3); depth > 0; --depth) {
        path += names[roll(dice, names.size())];
        if (depth > 1)
            path += separators[roll(dice, separators.size())];
    }
    return path;
}

} // namespace

/// The quick structures do what the plain ones do, whatever comes.
class TestPlainComparison : public QObject
{
    Q_OBJECT

private slots:
    void aFlatTableHoldsWhatAMapHolds_data()
    {
        QTest::addColumn<bool>("crowded");
        QTest::addColumn<int>("numbers");
        QTest::newRow("spread, few") << false << 20;
        QTest::newRow("spread, many") << false << 2000;
        QTest::newRow("crowded, few") << true << 20;
        QTest::newRow("crowded, more") << true << 200;
    }

    void aFlatTableHoldsWhatAMapHolds()
    {
        QFETCH(bool, crowded);
        QFETCH(int, numbers);
        const auto hashOf = crowded ? crowdedHash : spreadHash;
        std::mt19937 dice(1);
        FlatTable<NumberSlot> table;
        QMap<int, int> map;
        for (int step = 0; step < 20000; ++step) {
            const int number = roll(dice, numbers);
            const NumberSlot& found = std::as_const(table).Find(hashOf(number), isNumber(number));
            QCOMPARE(found.IsFree(), !map.contains(number));
            QCOMPARE(found.content, map.value(number));
            const int choice = roll(dice, 20);
            if (choice < 10 && found.IsFree()) {
                table.Insert({number, step, hashOf(number)});
                map.insert(number, step);
            } else if (choice < 19) {
                const NumberSlot taken = table.Take(hashOf(number), isNumber(number));
                QCOMPARE(taken.IsFree(), !map.contains(number));
                QCOMPARE(taken.content, map.take(number));
            } else if (!found.IsFree()) {
                table.Find(hashOf(number), isNumber(number)).content = -step;
                map[number] = -step;
            }
            QCOMPARE(table.GetCount(), static_cast<std::size_t>(map.size()));
        }
        QMap<int, int> visited;
        table.ForEach([&visited](const NumberSlot& slot) { visited.insert(slot.number, slot.content); });
        QCOMPARE(visited, map);
        table.Clear();
        QCOMPARE(table.GetCount(), std::size_t(0));
        for (auto it = map.cbegin(); it != map.cend(); ++it)
            QVERIFY(table.Find(hashOf(it.key()), isNumber(it.key())).IsFree());
    }

    void theTreeFindsWhatAPlainMapFinds()
    {
        const testsupport::FreshTree fresh;
        values::Tree* const tree = values::Tree::Instance();
        std::mt19937 dice(2);
        QMap<QString, values::ValueBase*> map;
        for (int step = 0; step < 30000; ++step) {
            const QString path = anyPath(dice);
            const QString plain = plainForm(path);
            QCOMPARE(tree->FindValue(path), map.value(plain));
            const int nameStart = plain.lastIndexOf(QLatin1Char('/')) + 1;
            switch (roll(dice, 4)) {
            case 0: {
                auto value = std::make_unique<values::BoolValue>();
                value->SetName(plain.mid(nameStart), nullptr);
                const QString parent = path.left(path.lastIndexOf(QLatin1Char('/')) + 1);
                QCOMPARE(tree->InsertValue(parent, value.get()), !map.contains(plain));
                if (!map.contains(plain)) {
                    QCOMPARE(value->GetPathName(), plain);
                    map.insert(plain, value.release());
                }
                break;
            }
            case 1:
                QCOMPARE(tree->DeleteValue(path), map.remove(plain) == 1);
                break;
            case 2:
                if (values::ValueBase* value = map.value(plain)) {
                    const QString name = QStringLiteral("N%1").arg(roll(dice, 5));
                    const QString renamed = plain.left(nameStart) + name;
                    QCOMPARE(value->SetName(name, nullptr), renamed == plain || !map.contains(renamed));
                    if (value->GetPathName() != plain)
                        map.insert(renamed, map.take(plain));
                }
                break;
            default:
                if (roll(dice, 20) == 0)
                    delete map.take(plain); // outright: the tree forgets it
                break;
            }
        }
        QVERIFY(!map.isEmpty());
        const std::vector<values::ValueBase*> all = tree->ValuesBelow(QString());
        const QList<values::ValueBase*> expected = map.values(); // a map's values are in the order of the paths
        QCOMPARE(std::vector<values::ValueBase*>(expected.begin(), expected.end()), all);
    }

    void aSelectionFindsKeysAsAPlainListDoes()
    {
        std::mt19937 dice(3);
        values::ValueSelection selection;
        QList<int> keys;
        const auto anyKey = [&dice] {
            static constexpr int edges[] = {
                0, 1, -2, 7500, 15000, 2147483647, -2147483647 - 1, values::ValueSelection::NoKey};
            return roll(dice, 4) == 0 ? edges[roll(dice, 8)] : roll(dice, 60) * 1000;
        };
        for (int step = 0; step < 20000; ++step) {
            const int key = anyKey();
            QCOMPARE(selection.GetItemIndex(key), keys.indexOf(key));
            switch (roll(dice, 4)) {
            case 0:
            case 1:
                QCOMPARE(selection.AddItem(QString::number(key), 0.0, key), key != values::ValueSelection::NoKey);
                if (key != values::ValueSelection::NoKey && !keys.contains(key))
                    keys.append(key);
                break;
            case 2:
                QCOMPARE(selection.DeleteItem(key), keys.removeOne(key));
                break;
            default:
                QCOMPARE(selection.Select(key), keys.contains(key));
                if (keys.contains(key))
                    QCOMPARE(selection.GetCurrentKey(), key);
                if (roll(dice, 200) == 0) {
                    selection.DeleteItems();
                    keys.clear();
                }
                break;
            }
            QCOMPARE(selection.GetItemCount(), keys.size());
        }
        values::ValueSelection copy;
        QVERIFY(copy.Assign(selection, nullptr));
        for (int i = 0; i < keys.size(); ++i) {
            QCOMPARE(copy.GetItemIndex(keys[i]), i);
            QCOMPARE(copy.GetItem(i)->GetKey(), keys[i]);
        }
    }
};

DFL_TEST_MAIN_WITH(TestPlainComparison, QCoreApplication)
#include "tst_plaincomparison.moc"
