#include "valueframework/tree.h"

#include "faultpoints/faultpoint.h"
#include "pathtable.h"
#include "valueframework/valuebase.h"

#include <QStringList>

#include <algorithm>
#include <exception>

namespace values {

namespace {

constexpr QLatin1Char separator('/');

bool isCanonical(const QString& path)
{
    return path.startsWith(separator) && !path.contains(QLatin1String("//"));
}

/// The form in which paths are keys: one leading separator, no doubled ones.
QString canonical(const QString& path)
{
    if (isCanonical(path))
        return path;
    QString result;
    result.reserve(path.size() + 1);
    result += separator;
    for (const QChar c : path) {
        if (c != separator || !result.endsWith(separator))
            result += c;
    }
    return result;
}

} // namespace

ITreeListener::~ITreeListener() = default;

Tree::Tree()
    : m_values(std::make_unique<PathTable>())
{
}

Tree::~Tree() = default;

Tree* Tree::Instance()
{
    faults::mayRaise("Tree::Instance");
    // Lives for the whole process: whatever holds values may outlive any static object.
    static Tree* const instance = new Tree;
    return instance;
}

ValueBase* Tree::FindValue(const QString& path) const
{
    if (faults::failsByResult("Tree::FindValue"))
        return nullptr;
    // Only canonical paths are in the table, so one that is found needs no look at its form.
    ValueBase* const value = m_values->find(path);
    return value != nullptr || isCanonical(path) ? value : m_values->find(canonical(path));
}

bool Tree::InsertValue(const QString& parentPath, ValueBase* value)
{
    if (faults::failsByResult("Tree::InsertValue"))
        return false;
    if (value == nullptr || value->m_inTree || value->m_name.isEmpty())
        return false;
    const QString path = canonical(parentPath + separator + value->m_name);
    if (m_values->find(path) != nullptr)
        return false;
    m_values->insert(path, value);
    value->m_path = path;
    value->m_inTree = true;
    TellListeners([value, &path, this](ITreeListener* listener) {
        if (m_values->find(path) == value) // an earlier listener may have deleted it
            listener->ValueInserted(value);
    });
    return true;
}

bool Tree::DeleteValue(const QString& path)
{
    ValueBase* const value = m_values->take(canonical(path));
    if (value == nullptr)
        return false;
    const QString removedPath = value->m_path;
    const std::exception_ptr failure = value->TakeLeave();
    TellListeners([&removedPath](ITreeListener* listener) { listener->ValueRemoved(removedPath); });
    if (failure)
        std::rethrow_exception(failure);
    return true;
}

std::vector<ValueBase*> Tree::ValuesBelow(const QString& path) const
{
    QString folder = canonical(path);
    if (!folder.endsWith(separator))
        folder += separator;
    std::vector<ValueBase*> below;
    for (ValueBase* value : m_values->all()) {
        if (value->m_path.startsWith(folder))
            below.push_back(value);
    }
    std::sort(below.begin(), below.end(), [](const ValueBase* a, const ValueBase* b) { return a->m_path < b->m_path; });
    return below;
}

void Tree::Clear()
{
    // By path: an observer may delete further values.
    QStringList paths;
    for (const ValueBase* value : m_values->all())
        paths.push_back(value->m_path);
    for (const QString& path : paths)
        DeleteValue(path);
}

void Tree::AddListener(ITreeListener* listener)
{
    if (listener != nullptr && std::find(m_listeners.begin(), m_listeners.end(), listener) == m_listeners.end())
        m_listeners.push_back(listener);
}

void Tree::RemoveListener(ITreeListener* listener)
{
    m_listeners.erase(std::remove(m_listeners.begin(), m_listeners.end(), listener), m_listeners.end());
}

bool Tree::Rename(ValueBase* value, const QString& name)
{
    const QString oldPath = value->m_path;
    const QString newPath = canonical(oldPath.left(oldPath.size() - value->m_name.size()) + name);
    if (m_values->find(newPath) != nullptr)
        return newPath == oldPath;
    m_values->take(oldPath);
    m_values->insert(newPath, value);
    value->m_name = name;
    value->m_path = newPath;
    TellListeners([&oldPath](ITreeListener* listener) { listener->ValueRemoved(oldPath); });
    TellListeners([value, &newPath, this](ITreeListener* listener) {
        if (m_values->find(newPath) == value)
            listener->ValueInserted(value);
    });
    return true;
}

void Tree::Forget(const QString& path)
{
    m_values->take(path);
    TellListeners([&path](ITreeListener* listener) { listener->ValueRemoved(path); });
}

template <typename Call>
void Tree::TellListeners(Call call)
{
    const std::vector<ITreeListener*> toTell = m_listeners;
    for (ITreeListener* listener : toTell) {
        if (std::find(m_listeners.begin(), m_listeners.end(), listener) != m_listeners.end())
            call(listener);
    }
}

} // namespace values
