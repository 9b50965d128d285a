// SPDX-License-Identifier: MIT
#include "platform/ThreadHeaps.h"
#include "KelvoTestCase.h"
#include "TestGroup.h"

#include <QByteArray>
#include <QTest>

#include <algorithm>
#include <barrier>
#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <thread>
#include <vector>

namespace {
qsizetype heaps()
{
    char *text = nullptr;
    size_t size = 0;
    std::FILE *file = ::open_memstream(&text, &size);
    ::malloc_info(0, file);
    std::fclose(file);
    const qsizetype count = QByteArray(text, qsizetype(size)).count("<heap nr=");
    std::free(text);
    return count;
}

constexpr size_t heapMegabyte = 1024 * 1024;

/// Unless told otherwise, the C library takes blocks up to this size from the heaps from now on, and keeps twice as
/// much there. What they keep so far goes back.
void freeHugeBlock()
{
    void *volatile block = std::malloc(30 * heapMegabyte);
    std::free(block);
    ::malloc_trim(0);
}

/// What the heap holds of the system while there are so many blocks of that size.
size_t memoryWith(int count, size_t size)
{
    std::vector<void *> blocks;
    blocks.reserve(size_t(count)); // before them, so that it does not hold them where they are
    for (int i = 0; i < count; ++i)
        blocks.push_back(std::malloc(size));
    const size_t held = ::mallinfo2().arena;
    for (void *block : blocks)
        std::free(block);
    return held;
}
} // namespace

/// The sanitizers have an allocator of their own: only without them can this fail.
class ThreadHeapsTest : public KelvoTestCase
{
    Q_OBJECT
private Q_SLOTS:
    void threadsShareThem()
    {
        constexpr int count = 8;
        const qsizetype before = heaps();
        ThreadHeaps::share();
        std::barrier allAllocate(count + 1);
        std::barrier allCounted(count + 1);
        std::vector<std::thread> threads;
        threads.reserve(count);
        for (int i = 0; i < count; ++i) {
            threads.emplace_back([&] {
                void *volatile memory = std::malloc(100);
                allAllocate.arrive_and_wait();
                allCounted.arrive_and_wait();
                std::free(memory);
            });
        }
        allAllocate.arrive_and_wait();
        const qsizetype during = heaps();
        allCounted.arrive_and_wait();
        for (std::thread &thread : threads)
            thread.join();
        QVERIFY2(during <= std::max<qsizetype>(before, 2), qPrintable(QString::number(during)));
    }

    void theyHoldNoLargeBlocks()
    {
        ThreadHeaps::share();
        freeHugeBlock();
        const size_t before = ::mallinfo2().arena;
        const size_t during = memoryWith(4, 8 * heapMegabyte);
        QVERIFY2(during < before + heapMegabyte,
            qPrintable(QStringLiteral("%1, then %2").arg(before).arg(during)));
    }

    void whatTheyNoLongerNeedGoesBack()
    {
        ThreadHeaps::share();
        freeHugeBlock();
        const size_t before = ::mallinfo2().arena;
        memoryWith(40, heapMegabyte);
        const size_t after = ::mallinfo2().arena;
        QVERIFY2(after < before + 16 * heapMegabyte,
            qPrintable(QStringLiteral("%1, then %2").arg(before).arg(after)));
    }
};

KELVO_TEST(ThreadHeapsTest)
#include "ThreadHeapsTest.moc"
