#include "bareloop.h"

// Aligned like the notification itself, so that where the linker puts them makes no difference.
[[gnu::hot, gnu::aligned(64)]] void tellAll(const std::vector<IObserver*>& observers, Observable* source,
                                            TChangeCode code)
{
    for (IObserver* observer : observers)
        observer->Update(source, code);
}
