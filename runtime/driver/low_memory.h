#ifndef RUNTIME_DRIVER_LOW_MEMORY_H
#define RUNTIME_DRIVER_LOW_MEMORY_H

#include <QtCore/QMutex>
#include <QtCore/QtGlobal>

#include <cstddef>

// The three objects that the runtime lends to the driver: the shared block, the recipe buffer and the mutex. Their
// addresses travel as 32-bit numbers, so on a 64-bit machine they lie below 4 GiB.

/// Size of the shared block in bytes: the driver touches the two request flags at its end.
constexpr std::size_t SHARED_BLOCK_SIZE = 60117;
constexpr std::size_t RECIPE_WRITE_FLAG = 60115; // 1 requests a recipe write
constexpr std::size_t RECIPE_READ_FLAG  = 60116; // 1 requests a recipe read

/// Size of the recipe buffer in words.
constexpr std::size_t RECIPE_BUFFER_WORDS = 65536;

/// Maps `size` zeroed bytes below 4 GiB, or returns null. With `byHintsOnly` it asks for one low address after the
/// other, which works on every system; otherwise it lets the system choose a low address where the system can.
void *mapLow(std::size_t size, bool byHintsOnly = false);
void unmapLow(void *memory, std::size_t size);

class LowMemory {
public:
    /// Throws std::runtime_error when the system has no free memory below 4 GiB.
    LowMemory();
    ~LowMemory();
    LowMemory(const LowMemory &) = delete;
    LowMemory &operator=(const LowMemory &) = delete;

    quint8  *sharedBlock() const { return objects_->sharedBlock; }
    quint16 *recipeBuffer() const { return objects_->recipeBuffer; }
    QMutex  *mutex() const { return &objects_->mutex; }

    /// Reads or sets a request flag under the mutex.
    bool flag(std::size_t offset) const;
    void setFlag(std::size_t offset, bool on);

    /// The 32-bit number under which the driver is told of an object below 4 GiB.
    static qint32 address(const void *object);

private:
    struct Objects {
        quint8  sharedBlock[SHARED_BLOCK_SIZE];
        quint16 recipeBuffer[RECIPE_BUFFER_WORDS];
        QMutex  mutex;
    };
    Objects *objects_;
};

#endif
