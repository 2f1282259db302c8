// Subpictures on surfaces: which step comes when, what each scaling makes of a picture, what happens when a step fails.
//
// The pictures of real sizes are pinned by their hashes and, beside the tests, as PNG files to look at. After a
// change that is meant: VX_UPDATE_GOLDEN=1 RenderTest rewrites the PNG files and prints the hashes.
#include <gtest/gtest.h>
#include <gui/Surface.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <ui/GraphicBufferMapper.h>
#ifdef VX_GOLDEN_PNG
#include <png.h>
#endif

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "host/MemoryProducer.h"
#include "subtitle/SubtitleParserSUBIDX.h"
#include "tests/support/HeldMemory.h"
#include "tests/support/Interpose.h"
#include "tests/support/VobSubPair.h"
#include "tools/samples/VobSubMaker.h"

using namespace android;
using host::Step;

namespace {

using Texts = std::vector<std::string>;
using Steps = std::vector<Step>;

constexpr U32 kColours[] = {0x00000000, 0xFFF0F0F0, 0xFF102030, 0x88D04020};
constexpr char kDequeue[] = "Surface::dequeueBuffer returned error ";

struct Size {
    int width, height;
};

/// A parser with a surface; only the frame size of an index is known to it.
struct Player {
    Player(Size frame, const host::Geometry& buffer)
        : parser(std::make_unique<SubtitleParserSUBIDX>(-1, -1, 0, 0)), producer(new host::MemoryProducer(buffer)) {
        parser->m_u32Width = static_cast<U32>(frame.width);
        parser->m_u32Height = static_cast<U32>(frame.height);
        memcpy(parser->m_au32Palette_result, kColours, sizeof kColours);
        parser->SetIGraphicBufferProducer(producer);
    }

    host::Picture render(const samples::Bitmap& bitmap) {
        EXPECT_EQ(TRUE, parser->_render(bitmap.codes.data(), static_cast<U16>(bitmap.width),
                                        static_cast<U16>(bitmap.height)));
        return producer->last();
    }

    std::unique_ptr<SubtitleParserSUBIDX> parser;
    sp<host::MemoryProducer> producer;
};

/// Of red, green, blue and alpha, as they lie in a buffer.
U32 argbOf(const uint8_t* p) { return U32{p[3]} << 24 | U32{p[0]} << 16 | U32{p[1]} << 8 | p[2]; }

/// One character per pixel: the colour code that has its colour, '.' for what is transparent.
Texts drawing(const host::Picture& picture, bool withPadding = false) {
    Texts rows;
    for (int y = 0; y < picture.height; ++y) {
        std::string row;
        for (int x = 0; x < (withPadding ? picture.stride : picture.width); ++x) {
            const U32 argb = argbOf(picture.pixel(x, y));
            char c = '?';
            for (int code = 0; code < 4; ++code) {
                if (argb == kColours[code]) c = ".123"[code];
            }
            row += c;
        }
        rows.push_back(row);
    }
    return rows;
}

/// The picture as the rules say, pixel by pixel.
std::vector<U32> pixelsByTheRules(Size frame, const host::Geometry& buffer, const samples::Bitmap& bitmap) {
    const int w = static_cast<int>(bitmap.width), h = static_cast<int>(bitmap.height);
    const int stride = buffer.stride, bw = buffer.width, bh = buffer.height;
    std::vector<U32> pixels(static_cast<size_t>(stride * bh));
    const auto put = [&](int row, int column, uint8_t code) {
        const long at = static_cast<long>(row) * stride + column;
        if (at >= 0 && at < static_cast<long>(pixels.size())) pixels[static_cast<size_t>(at)] = kColours[code];
    };
    const auto dropped = [](int size, int full) {
        return size >= full ? 0 : 4 * size / full >= 3 ? 4 : 12 * size / full == 8 ? 3 : 2;
    };
    const auto quotient = [](int value, int k) { return k == 0 ? 0 : value / k; };
    for (int i = 0; i < h; ++i) {
        for (int j = 0; j < w; ++j) {
            const uint8_t code = bitmap.at(static_cast<unsigned>(j), static_cast<unsigned>(i));
            if (bw > frame.width && bh > frame.height && (bw >= 2 * frame.width || bh >= 2 * frame.height)) {
                const int fx = bw >= 2 * frame.width ? 2 : 1;
                const int fy = bh >= 2 * frame.height ? 2 : 1;
                for (int y = 0; y < fy; ++y) {
                    for (int x = 0; x < fx; ++x) put(bh - fy * h + i * fy + y, (bw - fx * w) / 2 + j * fx + x, code);
                }
            } else if (bw >= frame.width && bh >= frame.height) {
                put(bh - h + i, (bw - w) / 2 + j, code);
            } else if (2 * bh >= frame.height && 2 * bw >= frame.width) {
                const int kx = dropped(bw, frame.width);
                const int ky = dropped(bh, frame.height);
                if ((kx != 0 && (j + 1) % kx == 0) || (ky != 0 && (i + 1) % ky == 0)) continue;
                put(bh - (h - quotient(h, ky)) + (i - quotient(i, ky)),
                    j - quotient(j, kx) + (bw - w + quotient(w, kx)) / 2, code);
            }
        }
    }
    return pixels;
}

std::vector<U32> pixelsOf(const host::Picture& picture) {
    std::vector<U32> pixels;
    for (size_t i = 0; i < picture.bytes.size(); i += 4) pixels.push_back(argbOf(&picture.bytes[i]));
    return pixels;
}

const samples::Bitmap kArrow({"1......2",  //
                              ".1.33.2.",  //
                              "..1332..",  //
                              "...12...",  //
                              "..1..2..",  //
                              ".1....2."});

}  // namespace

// --- the stand-ins ---------------------------------------------------------------------------------------------

#ifdef __arm__
static_assert(offsetof(ANativeWindow, dequeueBuffer_DEPRECATED) == 72 && offsetof(ANativeWindow, perform) == 88 &&
              offsetof(ANativeWindow, queueBuffer) == 100 && offsetof(ANativeWindow, cancelBuffer) == 104 &&
              sizeof(ANativeWindow) == 108);
static_assert(offsetof(ANativeWindowBuffer, width) == 32 && offsetof(ANativeWindowBuffer, stride) == 40 &&
              offsetof(ANativeWindowBuffer, handle) == 60 && sizeof(ANativeWindowBuffer) == 96);
#endif

TEST(StandIns, RefuseWrongOrders) {
    const sp<host::MemoryProducer> producer = new host::MemoryProducer({4, 2});
    const sp<ANativeWindow> window = new Surface(producer, false);
    GraphicBufferMapper& mapper = GraphicBufferMapper::get();
    ANativeWindowBuffer* buffer = nullptr;
    void* pixels = nullptr;
    EXPECT_EQ(OK, window->dequeueBuffer_DEPRECATED(window.get(), &buffer));
    EXPECT_EQ(INVALID_OPERATION, window->dequeueBuffer_DEPRECATED(window.get(), &buffer)) << "one is out";
    const buffer_handle_t handle = buffer->handle;
    EXPECT_NE(OK, mapper.unlock(handle));
    EXPECT_EQ(OK, mapper.lock(handle, 0x30, Rect(4, 2), &pixels));
    EXPECT_EQ(0xA5, static_cast<U8*>(pixels)[4 * 2 * 4 - 1]) << "nobody relies on a cleared buffer";
    EXPECT_NE(OK, mapper.lock(handle, 0x30, Rect(4, 2), &pixels)) << "locked already";
    EXPECT_EQ(BAD_VALUE, window->queueBuffer(window.get(), buffer, -1)) << "still locked";
    EXPECT_EQ(OK, mapper.unlock(handle));
    EXPECT_EQ(OK, window->queueBuffer(window.get(), buffer, -1));
    EXPECT_EQ(BAD_VALUE, window->queueBuffer(window.get(), buffer, -1)) << "no longer out";
    EXPECT_EQ(BAD_VALUE, window->cancelBuffer(window.get(), buffer, -1));
    EXPECT_GT(mapper.lock(handle, 0x30, Rect(4, 2), &pixels), 0) << "a number of the hardware layer";
    EXPECT_EQ(1U, producer->queued().size());
}

TEST(StandIns, UsageHas64BitsAndOtherOperationsAreUnknown) {
    const sp<host::MemoryProducer> producer = new host::MemoryProducer({4, 2});
    const sp<ANativeWindow> window = new Surface(producer, false);
    EXPECT_EQ(OK, native_window_set_usage(window.get(), 0x123456789ABULL));
    EXPECT_EQ(-ENOENT, window->perform(window.get(), 0, 0x30));
    ANativeWindowBuffer* buffer = nullptr;
    int fence = 0;
    EXPECT_EQ(OK, window->dequeueBuffer(window.get(), &buffer, &fence));
    EXPECT_EQ(-1, fence);
    EXPECT_EQ(OK, window->queueBuffer(window.get(), buffer, 7));
    EXPECT_EQ(0x123456789ABULL, producer->last().usage);
    EXPECT_EQ(7, producer->last().fence);
}

TEST(StandIns, APicturesMemoryServesAgain) {
    Player player({8, 6}, {8, 6});
    EXPECT_TRUE(player.producer->takeLast().bytes.empty()) << "nothing is queued";
    player.render(kArrow);
    player.render(samples::Bitmap());
    EXPECT_EQ(Texts(6, "........"), drawing(player.producer->takeLast()));
    EXPECT_EQ(1U, player.producer->queued().size());
    host::Picture picture = player.producer->takeLast();
    EXPECT_EQ("1......2", drawing(picture)[0]);
    const uint8_t* const memory = picture.bytes.data();
    const std::vector<uint8_t> shown = picture.bytes;
    player.producer->giveBack(std::move(picture));
    const auto dequeued = [&] {
        ANativeWindowBuffer* buffer = nullptr;
        void* pixels = nullptr;
        EXPECT_EQ(OK, player.producer->dequeue(&buffer, 0));
        EXPECT_EQ(OK, player.producer->lock(0, Rect(8, 6), &pixels));
        return static_cast<uint8_t*>(pixels);
    };
    EXPECT_EQ(memory, dequeued());
    EXPECT_TRUE(std::equal(shown.begin(), shown.end(), memory)) << "as it was";

    Player other({8, 6}, {8, 7});
    host::Picture tooSmall;
    tooSmall.bytes = shown;
    other.producer->giveBack(std::move(tooSmall));
    other.render(kArrow);
    EXPECT_EQ(8U * 7 * 4, other.producer->last().bytes.size());
}

TEST(StandIns, FailOnDemand) {
    const sp<host::MemoryProducer> producer = new host::MemoryProducer({4, 2});
    const sp<ANativeWindow> window = new Surface(producer, false);
    producer->failNext(Step::kDequeue, -5, 1);
    ANativeWindowBuffer* buffer = nullptr;
    EXPECT_EQ(OK, native_window_dequeue_buffer_and_wait(window.get(), &buffer));
    EXPECT_EQ(OK, window->cancelBuffer(window.get(), buffer, -1));
    EXPECT_EQ(-5, native_window_dequeue_buffer_and_wait(window.get(), &buffer));
    EXPECT_EQ(OK, native_window_dequeue_buffer_and_wait(window.get(), &buffer));
    EXPECT_TRUE(producer->dequeued());
}

// --- steps -----------------------------------------------------------------------------------------------------

TEST(Render, WithoutASurfaceNothingIsDrawn) {
    const samples::VobSub film = samples::demoVobSub();
    test::VobSubInMemory files;
    files.load(film.idx(), film.sub());
    stSubDecoderInfo info = {};
    EXPECT_NE(0U, files.parser.GetData(0, nullptr, 0, 0, &info));
    EXPECT_NE(0, info.u16Width);
    const test::LogCapture log;
    EXPECT_EQ(TRUE, files.parser._render(files.parser.m_buffer, 8, 8));
    EXPECT_EQ(TRUE, files.parser._render(nullptr, 8, 8));
    EXPECT_EQ(TRUE, files.parser.Refresh());
    EXPECT_EQ(Texts(), log.texts());
}

TEST(Render, TakesEachBufferThroughFourSteps) {
    Player player({16, 8}, {16, 8, 20});
    const test::LogCapture log;
    const host::Picture picture = player.render(kArrow);
    EXPECT_EQ(Steps({Step::kDequeue, Step::kLock, Step::kUnlock, Step::kQueue}), player.producer->steps());
    EXPECT_EQ(0x30U, picture.usage) << "set when the surface was attached";
    EXPECT_EQ(-1, picture.fence);
    ASSERT_EQ(1U, player.producer->locks().size());
    EXPECT_EQ(0x30U, player.producer->locks()[0].usage);
    const Rect bounds = player.producer->locks()[0].bounds;
    EXPECT_EQ(0, bounds.left);
    EXPECT_EQ(0, bounds.top);
    EXPECT_EQ(16, bounds.right);
    EXPECT_EQ(8, bounds.bottom);
    EXPECT_EQ(Texts(), log.texts());

    EXPECT_EQ(TRUE, player.parser->Refresh());
    EXPECT_EQ(Steps({Step::kDequeue, Step::kLock, Step::kUnlock, Step::kQueue, Step::kDequeue, Step::kLock,
                     Step::kUnlock, Step::kQueue}),
              player.producer->steps());
    EXPECT_EQ(0x30U, player.producer->locks()[1].usage);
    EXPECT_EQ(16, player.producer->locks()[1].bounds.right);
    EXPECT_EQ(-1, player.producer->last().fence);
    EXPECT_EQ(std::vector<uint8_t>(20 * 8 * 4), player.producer->last().bytes) << "padding, too";
}

TEST(Render, AFailedStepIsLoggedAndTheBufferGivenBack) {
    const struct {
        Step step;
        int status;
        const char* rendering;  // logged by _render
        Steps steps;
    } kRows[] = {
        {Step::kDequeue, -19, "Surface::dequeueBuffer returned error -19", {Step::kDequeue}},
        {Step::kDequeue, 5, "Surface::dequeueBuffer returned error 5", {Step::kDequeue}},
        {Step::kLock, -22, "Surface::dequeueBuffer returned error -22", {Step::kDequeue, Step::kLock, Step::kCancel}},
        {Step::kLock, 3, "Surface::dequeueBuffer returned error 3", {Step::kDequeue, Step::kLock, Step::kCancel}},
        {Step::kUnlock,
         -1,
         "mapper.unlock returned error -1",
         {Step::kDequeue, Step::kLock, Step::kUnlock, Step::kCancel}},
        {Step::kQueue,
         -38,
         "queueBuffer returned error -38",
         {Step::kDequeue, Step::kLock, Step::kUnlock, Step::kQueue, Step::kCancel}},
    };
    for (const auto& row : kRows) {
        for (const bool clearing : {false, true}) {
            Player player({8, 6}, {8, 6});
            player.producer->failNext(row.step, row.status);
            {
                const test::LogCapture log;
                const BOOL result =
                    clearing ? player.parser->Refresh() : player.parser->_render(kArrow.codes.data(), 8, 6);
                EXPECT_EQ(FALSE, result) << row.rendering;
                const std::string text = clearing ? kDequeue + std::to_string(row.status) : row.rendering;
                EXPECT_EQ(std::vector<test::LogLine>({{3, "", text}}), log.lines());
            }
            EXPECT_EQ(row.steps, player.producer->steps()) << row.rendering;
            EXPECT_FALSE(player.producer->dequeued()) << row.rendering;
            EXPECT_TRUE(player.producer->queued().empty());
            player.render(kArrow);  // nothing is stuck
            EXPECT_EQ(1U, player.producer->queued().size());
        }
    }
}

TEST(Render, ABufferIsGivenBackWithoutAFence) {
    struct Noting : host::MemoryProducer {
        using MemoryProducer::MemoryProducer;
        status_t cancel(ANativeWindowBuffer* buffer, int fence) override {
            fences.push_back(fence);
            return MemoryProducer::cancel(buffer, fence);
        }
        std::vector<int> fences;
    };
    SubtitleParserSUBIDX parser(-1, -1, 0, 0);
    const sp<Noting> producer = new Noting({8, 6});
    parser.SetIGraphicBufferProducer(producer);
    producer->failNext(Step::kQueue, -38);
    EXPECT_EQ(FALSE, parser.Refresh());
    EXPECT_EQ(std::vector<int>{-1}, producer->fences);
}

// kept(vob-draw-failure)
TEST(Render, AFailedDrawingDoesNotFailTheDecoding) {
    const samples::VobSub film = samples::demoVobSub();
    test::VobSubInMemory files;
    files.load(film.idx(), film.sub());
    const sp<host::MemoryProducer> producer = new host::MemoryProducer({1920, 1080});
    files.parser.SetIGraphicBufferProducer(producer);
    producer->failNext(Step::kLock, -22);
    EXPECT_NE(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
    EXPECT_TRUE(producer->queued().empty());
    EXPECT_NE(0U, files.parser.GetData(0, nullptr, 0, 1, nullptr));
    EXPECT_EQ(1U, producer->queued().size());
}

TEST(Render, AttachingAndDetaching) {
    const sp<host::MemoryProducer> first = new host::MemoryProducer({8, 6});
    const sp<host::MemoryProducer> second = new host::MemoryProducer({8, 6});
    {
        SubtitleParserSUBIDX parser(-1, -1, 0, 0);
        parser.SetIGraphicBufferProducer(first);
        EXPECT_EQ(2, first->getStrongCount());
        EXPECT_TRUE(parser.m_NativeWindow != nullptr);
        EXPECT_TRUE(first->steps().empty()) << "attaching draws nothing";
        parser.SetIGraphicBufferProducer(second);
        EXPECT_EQ(1, first->getStrongCount()) << "released";
        EXPECT_EQ(TRUE, parser.Refresh());
        EXPECT_EQ(1U, second->queued().size());
        parser.SetIGraphicBufferProducer(sp<IGraphicBufferProducer>());
        EXPECT_TRUE(parser.m_NativeWindow == nullptr);
        EXPECT_EQ(1, second->getStrongCount());
        EXPECT_EQ(TRUE, parser.Refresh());
        EXPECT_EQ(1U, second->queued().size());
        parser.SetIGraphicBufferProducer(second);
    }
    EXPECT_EQ(1, second->getStrongCount());
    EXPECT_EQ(2U, second->queued().size()) << "a parser clears its surface when it is destroyed";
    EXPECT_EQ(Texts(6, "........"), drawing(second->last()));
    EXPECT_TRUE(first->queued().empty());
}

namespace {

/// Looks at the parser's lock while a buffer is asked for.
class LockProbe : public IGraphicBufferProducer {
public:
    explicit LockProbe(Mutex& lock) : mLock(lock) {}
    std::vector<bool> held;

    status_t dequeue(ANativeWindowBuffer**, uint64_t) override {
        const bool free = mLock.tryLock() == OK;
        if (free) mLock.unlock();
        held.push_back(!free);
        return NO_INIT;
    }
    status_t queue(ANativeWindowBuffer*, int) override { return OK; }
    status_t cancel(ANativeWindowBuffer*, int) override { return OK; }

private:
    Mutex& mLock;
};

}  // namespace

TEST(Render, RefreshHoldsTheLockAndDrawingDoesNot) {
    SubtitleParserSUBIDX parser(-1, -1, 0, 0);
    const sp<LockProbe> probe = new LockProbe(parser.mLock);
    parser.SetIGraphicBufferProducer(probe);
    EXPECT_EQ(FALSE, parser.Refresh());
    EXPECT_EQ(FALSE, parser._render(kArrow.codes.data(), 8, 6));
    EXPECT_EQ(std::vector<bool>({true, false}), probe->held);
    EXPECT_EQ(OK, parser.mLock.tryLock()) << "free again after a failure";
    parser.mLock.unlock();
    parser.SetIGraphicBufferProducer(nullptr);
}

// --- colours ---------------------------------------------------------------------------------------------------

TEST(Render, PixelsAreRedGreenBlueAlpha) {
    Player player({4, 1}, {4, 1});
    player.parser->m_au32Palette_result[0] = 0x11223344;
    player.parser->m_au32Palette_result[15] = 0xDEADBEEF;
    const U8 codes[] = {0, 15, 16, 255};  // what lies behind the table is transparent
    EXPECT_EQ(TRUE, player.parser->_render(codes, 4, 1));
    EXPECT_EQ(std::vector<uint8_t>({0x22, 0x33, 0x44, 0x11, 0xAD, 0xBE, 0xEF, 0xDE, 0, 0, 0, 0, 0, 0, 0, 0}),
              player.producer->last().bytes);
}

// kept(vob-position)
TEST(Render, DrawsTheSubpictureInItsColours) {
    const samples::VobSub film = samples::demoVobSub();
    test::VobSubInMemory files;
    files.load(film.idx(), film.sub());
    const sp<host::MemoryProducer> producer = new host::MemoryProducer({720, 576});
    files.parser.SetIGraphicBufferProducer(producer);
    stSubDecoderInfo info = {};
    ASSERT_NE(0U, files.parser.GetData(0, nullptr, 0, 0, &info));
    const host::Picture picture = producer->last();
    const int left = (720 - info.u16Width) / 2;
    size_t different = 0;
    size_t drawn = 0;
    for (int y = 0; y < info.u16Height; ++y) {
        for (int x = 0; x < info.u16Width; ++x) {
            const U8 code = files.parser.m_buffer[static_cast<size_t>(y) * info.u16Width + static_cast<size_t>(x)];
            const U32 argb = argbOf(picture.pixel(left + x, 576 - info.u16Height + y));
            different += argb != files.parser.m_au32Palette_result[code];
            drawn += argb != 0;
        }
    }
    EXPECT_EQ(0U, different);
    EXPECT_GT(drawn, 1000U);
}

// --- scaling ---------------------------------------------------------------------------------------------------

TEST(Render, Scaling) {
    const struct {
        const char* what;
        Size frame;
        host::Geometry buffer;
        Texts drawing;
    } kRows[] = {
        {"as is: the buffer is as large as the frame",
         {10, 8},
         {10, 8},
         {"..........", "..........",  //
          ".1......2.", "..1.33.2..", "...1332...", "....12....", "...1..2...", "..1....2.."}},
        {"as is: larger, but not twice as large",
         {8, 6},
         {13, 8},  // (13 - 8) / 2 = 2
         {".............", ".............", "..1......2...", "...1.33.2....", "....1332.....", ".....12......",
          "....1..2.....", "...1....2...."}},
        {"as is: twice as wide, but no higher",
         {8, 6},
         {16, 6},
         {"....1......2....", ".....1.33.2.....", "......1332......", ".......12.......", "......1..2......",
          ".....1....2....."}},
        {"enlarged in width alone",  // kept(vob-stretch)
         {9, 6},
         {18, 7},
         {"..................", ".11............22.", "...11..3333..22...", ".....11333322.....", ".......1122.......",
          ".....11....22.....", "...11........22..."}},
        {"enlarged in height alone",
         {6, 4},
         {10, 12},
         {".1......2.", ".1......2.", "..1.33.2..", "..1.33.2..", "...1332...", "...1332...", "....12....",
          "....12....", "...1..2...", "...1..2...", "..1....2..", "..1....2.."}},
        {"enlarged in both",
         {8, 6},
         {16, 12},
         {"11............22", "11............22", "..11..3333..22..", "..11..3333..22..", "....11333322....",
          "....11333322....", "......1122......", "......1122......", "....11....22....", "....11....22....",
          "..11........22..", "..11........22.."}},
        {"reduced: every fourth",
         {16, 8},
         {12, 6},  // row 4 and columns 4 and 8 go
         {"............", "...1........", "....1.3.2...", ".....132....", ".....1.2....", "....1...2..."}},
        {"reduced: every third",
         {12, 9},
         {8, 6},
         {"........", "........", ".1....2.", "..1332..", "...12...", "........"}},
        {"reduced: every second",
         {16, 12},
         {8, 6},
         {"........", "........", "........", "..1.....", "...13...", "...1...."}},
        {"reduced in width alone",
         {16, 6},
         {12, 6},
         {"...1........", "....1.3.2...", ".....132....", "......2.....", ".....1.2....", "....1...2..."}},
        {"reduced in height alone, by different steps",
         {8, 12},
         {8, 6},
         {"........", "........", "........", "1......2", "..1332..", "..1..2.."}},
    };
    for (const auto& row : kRows) {
        Player player(row.frame, row.buffer);
        EXPECT_EQ(row.drawing, drawing(player.render(kArrow))) << row.what;
    }
}

TEST(Render, ASurfaceOfLessThanHalfTheFrameStaysEmpty) {
    const struct {
        Size frame, buffer;
        bool available;
    } kRows[] = {
        {{16, 6}, {8, 6}, true},  {{17, 6}, {8, 6}, false},         {{8, 12}, {8, 6}, true},
        {{8, 13}, {8, 6}, false}, {{17, 13}, {8, 6}, false},        {{1, 13}, {100, 6}, false},
        {{16, 12}, {8, 6}, true}, {{0x7FFFFFFF, 1}, {8, 6}, false},
    };
    for (const auto& row : kRows) {
        Player player(row.frame, {row.buffer.width, row.buffer.height});
        const test::LogCapture log;
        const host::Picture picture = player.render(kArrow);
        EXPECT_EQ(row.available ? Texts() : Texts({"the surface is unavaliable"}), log.texts()) << row.frame.width;
        EXPECT_EQ(1U, player.producer->queued().size());
        if (row.available) continue;
        EXPECT_EQ(std::vector<uint8_t>(picture.bytes.size()), picture.bytes);
    }
    // the largest frame that an index can name
    Player player({0, 0}, {8, 6});
    player.parser->m_u32Width = player.parser->m_u32Height = 0xFFFFFFFF;
    const test::LogCapture log;
    player.render(kArrow);
    EXPECT_EQ(Texts({"the surface is unavaliable"}), log.texts());
}

// kept(vob-no-size)
TEST(Render, AFrameWithoutASizeIsEnlarged) {
    Player player({0, 0}, {1, 1});
    EXPECT_EQ(Texts({"1"}), drawing(player.render(samples::Bitmap({"1"}))));
    Player wide({0, 0}, {16, 12});
    EXPECT_EQ("11............22", drawing(wide.render(kArrow))[0]);
}

// --- edges -----------------------------------------------------------------------------------------------------

// kept(vob-spill)
TEST(Render, WhatReachesOverAnEdgeLandsInANeighbouringRow) {
    const samples::Bitmap wide({"1111222233", "3.......31"});
    // 10 pixels centred on 6: from column -2 on. Rows written later win.
    Player player({6, 4}, {6, 4});
    const host::Picture picture = player.render(wide);
    EXPECT_EQ(pixelsByTheRules({6, 4}, {6, 4, 6}, wide), pixelsOf(picture));
    EXPECT_EQ(Texts({"......", "....11", "11223.", "......"}), drawing(picture));

    // With room between the rows it lands there.
    Player padded({6, 4}, {6, 4, 10});
    EXPECT_EQ(Texts({"..........", "........11",
                     "11222233"
                     "3.",
                     "......31.."}),
              drawing(padded.render(wide), true));

    // Higher than the surface: what lies above its first row is dropped, but for what reaches into it.
    Player low({2, 1}, {2, 1});
    EXPECT_EQ(Texts({"31"}), drawing(low.render(samples::Bitmap({"11", "22", "31"}))));
}

TEST(Render, EnlargedBlocksAreWrittenInReadingOrder) {
    // Four pixels twice as large on a row of four: each line reaches over both edges. Of a block row the upper line's
    // end is written after the lower line's start.
    const samples::Bitmap wide({"1233", "2131"});
    const host::Geometry buffer = {4, 4, 4};
    Player player({2, 2}, buffer);
    const host::Picture picture = player.render(wide);
    EXPECT_EQ(pixelsByTheRules({2, 2}, buffer, wide), pixelsOf(picture));
    EXPECT_EQ(Texts({"2233", "3322", "1133", "1133"}), drawing(picture));
}

TEST(Render, AnySizeFollowsTheRules) {
    std::mt19937 random(4);
    const auto below = [&](unsigned n) { return static_cast<int>(random() % n); };
    int unavailable = 0;
    Player player({0, 0}, {1, 1});
    for (int round = 0; round < 3000; ++round) {
        const Size frame = {below(40), below(40)};
        host::Geometry buffer = {1 + below(50), 1 + below(50), 0};
        buffer.stride = buffer.width + below(3) * 4 + 1;
        samples::Bitmap bitmap(static_cast<unsigned>(below(60)), static_cast<unsigned>(below(60)));
        for (uint8_t& code : bitmap.codes) code = static_cast<uint8_t>(below(4));
        player.parser->m_u32Width = static_cast<U32>(frame.width);
        player.parser->m_u32Height = static_cast<U32>(frame.height);
        player.producer->setGeometry(buffer);
        player.producer->forget();
        const test::LogCapture log;
        const host::Picture picture = player.render(bitmap);
        unavailable += log.texts().empty() ? 0 : 1;
        ASSERT_EQ(pixelsByTheRules(frame, buffer, bitmap), pixelsOf(picture))
            << "frame " << frame.width << "x" << frame.height << ", surface " << buffer.width << "x" << buffer.height
            << " of stride " << buffer.stride << ", picture " << bitmap.width << "x" << bitmap.height;
    }
    EXPECT_GT(unavailable, 100);
    EXPECT_LT(unavailable, 2000);
}

// Lines are drawn eight codes at a time: of one code, of four colours, or of any.
TEST(Render, EveryCodeHasItsColourAtEveryPlace) {
    std::mt19937 random(5);
    const auto below = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
    Player player({0, 0}, {1, 1});
    for (U32 i = 0; i < 16; ++i) player.parser->m_au32Palette_result[i] = 0x01020304 * (i + 1);
    for (int round = 0; round < 1000; ++round) {
        const bool wide = round % 2 == 0, high = round % 4 < 2;
        const unsigned codes = round % 8 < 6 ? 4 : 256, longest = 1 + below(30);
        samples::Bitmap bitmap(1 + below(70), 1 + below(4));
        for (size_t i = 0; i < bitmap.codes.size();) {
            const auto code = static_cast<uint8_t>(below(codes));
            for (unsigned run = 1 + below(longest); run-- > 0 && i < bitmap.codes.size();) bitmap.codes[i++] = code;
        }
        const host::Geometry buffer = {140 + static_cast<int>(below(3)), 8, 145};
        player.parser->m_u32Width = wide ? 70 : 72 + below(68);
        player.parser->m_u32Height = high ? 4 : 5 + below(3);
        player.producer->setGeometry(buffer);
        player.producer->forget();
        const host::Picture picture = player.render(bitmap);
        const unsigned fx = wide ? 2 : 1, fy = high ? 2 : 1;
        const unsigned left = (static_cast<unsigned>(buffer.width) - fx * bitmap.width) / 2;
        std::vector<U32> expected(145 * 8);
        for (unsigned y = 0; y < fy * bitmap.height; ++y) {
            for (unsigned x = 0; x < fx * bitmap.width; ++x) {
                const unsigned code = bitmap.at(x / fx, y / fy);
                expected[(8 - fy * bitmap.height + y) * 145 + left + x] =
                    code < 16 ? player.parser->m_au32Palette_result[code] : 0;
            }
        }
        ASSERT_EQ(expected, pixelsOf(picture)) << bitmap.width << "x" << bitmap.height << ", " << fx << "x" << fy;
    }
}

namespace {

/// A picture of more pixels than the parser's bitmap holds, all of them in code 1 but the first.
samples::VobSub hugeFilm() {
    samples::Subpicture picture;
    picture.bitmap = samples::Bitmap(4096, 2024);  // 4096 x 506 codes and 1024 more are decoded
    std::fill(picture.bitmap.codes.begin(), picture.bitmap.codes.end(), uint8_t{1});
    picture.bitmap.at(0, 0) = 2;  // the colour of the first pixel goes
    picture.spareLines = 1;
    samples::VobSub film(4096, 2024, {kColours, std::end(kColours)});
    film.track("en");
    film.add(0, picture);
    return film;
}

}  // namespace

TEST(Render, AnAreaLargerThanTheParsersBitmapReadsZeroBehindIt) {
    const samples::VobSub film = hugeFilm();
    test::VobSubInMemory files;
    files.load(film.idx(), film.sub());
    const sp<host::MemoryProducer> producer(new host::MemoryProducer({2048, 1012}));
    files.parser.SetIGraphicBufferProducer(producer);
    stSubDecoderInfo info = {};
    ASSERT_NE(0U, files.parser.GetData(0, nullptr, 0, 0, &info));
    ASSERT_EQ(4096, info.u16Width);
    ASSERT_EQ(2024, info.u16Height);
    // every second row and column: row 253 is the bitmap's row 506, in which 1024 codes are left
    const Texts rows = drawing(producer->last());
    EXPECT_EQ(std::string(2048, '1'), rows[252]);
    EXPECT_EQ(std::string(512, '1') + std::string(2048 - 512, '.'), rows[253]);
    EXPECT_EQ(std::string(2048, '.'), rows[254]);
    EXPECT_EQ(TRUE, files.parser._render(nullptr, 65535, 65535));
}

TEST(Render, AnAreaLargerThanTheParsersBitmapTakesMemoryForItsDrawingAlone) {
    const samples::VobSub film = hugeFilm();
    test::VobSubInMemory files;
    files.load(film.idx(), film.sub());
    const size_t before = test::heldBytes();
    for (int i = 0; i < 4; ++i) ASSERT_NE(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
    EXPECT_LT(test::heldBytes(), before + 1920 * 1080);
}

TEST(Render, EmptyPicturesClearTheSurface) {
    Player player({8, 6}, {8, 6});
    EXPECT_EQ(Texts(6, "........"), drawing(player.render(samples::Bitmap())));
    EXPECT_EQ(TRUE, player.parser->_render(kArrow.codes.data(), 8, 0));
    EXPECT_EQ(TRUE, player.parser->_render(kArrow.codes.data(), 0, 6));
    Player none({8, 6}, {0, 0});
    EXPECT_EQ(TRUE, none.parser->_render(kArrow.codes.data(), 8, 6));
    Player unread({8, 6}, {8, 6});
    EXPECT_EQ(TRUE, unread.parser->_render(nullptr, 8, 6));
    EXPECT_EQ(Texts(6, "........"), drawing(unread.producer->last())) << "nothing is read from nowhere";
}

// --- real sizes ------------------------------------------------------------------------------------------------

namespace {

uint64_t hashOf(const host::Picture& picture) {
    uint64_t hash = 0xCBF29CE484222325ULL;
    for (const U32 pixel : pixelsOf(picture)) hash = (hash ^ pixel) * 0x100000001B3ULL;
    return hash;
}

#ifdef VX_GOLDEN_PNG
std::string pngPath(const std::string& name) { return std::string(VX_GOLDEN_PNG) + "/" + name + ".png"; }

bool writePng(const std::string& path, const host::Picture& picture) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGBA;
    return png_image_write_to_file(&image, path.c_str(), 0, picture.bytes.data(), 0, nullptr) != 0;
}

std::vector<uint8_t> readPng(const std::string& path) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0) return {};
    image.format = PNG_FORMAT_RGBA;
    std::vector<uint8_t> bytes(PNG_IMAGE_SIZE(image));
    return png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr) != 0 ? bytes : std::vector<uint8_t>();
}
#endif

}  // namespace

TEST(Render, RealSizes) {
    const struct {
        const char* name;
        Size frame, buffer;
        unsigned scale;  // of the letters
        uint64_t hash;
    } kRows[] = {
        {"720x576_on_1920x1080", {720, 576}, {1920, 1080}, 4, 0xE78B46C2B1156725ULL},
        {"640x480_on_1920x1080", {640, 480}, {1920, 1080}, 4, 0xECE1D749DB8CFB25ULL},
        {"720x576_on_1280x720", {720, 576}, {1280, 720}, 4, 0x07F4E0AE50C3F925ULL},
        {"1920x1080_on_1920x1080", {1920, 1080}, {1920, 1080}, 9, 0x1A4C4558F8559BE5ULL},
        {"1920x1080_on_1440x810", {1920, 1080}, {1440, 810}, 9, 0x64D8CF9D20DEFA35ULL},
        {"1920x1080_on_1280x720", {1920, 1080}, {1280, 720}, 9, 0x0182B9E7BEF35F65ULL},
        {"1920x1080_on_960x540", {1920, 1080}, {960, 540}, 9, 0xD94767F3E06BE9E5ULL},
        {"1920x1080_on_959x540", {1920, 1080}, {959, 540}, 9, 0x115F0CA79D6F6575ULL},
        {"unknown_on_1920x1080", {0, 0}, {1920, 1080}, 9, 0x2AA6C7FCA5A67525ULL},
    };
    const bool update = getenv("VX_UPDATE_GOLDEN") != nullptr;
    for (const auto& row : kRows) {
        samples::VobSub film(static_cast<unsigned>(row.frame.width), static_cast<unsigned>(row.frame.height),
                             {0x000000, 0xF0F0F0, 0x202040, 0x808080});
        samples::Subpicture subpicture;
        subpicture.bitmap = samples::drawText({"WHO IS ON THE STAIRS?", "- ONLY THE WIND."}, row.scale);
        subpicture.spareLines = 1;
        film.track("en");
        film.add(1000, subpicture);
        test::VobSubInMemory files;
        files.load(film.idx(), film.sub());
        const sp<host::MemoryProducer> producer = new host::MemoryProducer({row.buffer.width, row.buffer.height});
        files.parser.SetIGraphicBufferProducer(producer);
        ASSERT_NE(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr)) << row.name;
        const host::Picture picture = producer->last();
        EXPECT_EQ(row.hash, hashOf(picture)) << row.name;
        if (update) printf("%s 0x%016llX\n", row.name, static_cast<unsigned long long>(hashOf(picture)));
#ifdef VX_GOLDEN_PNG
        EXPECT_TRUE(!update || writePng(pngPath(row.name), picture)) << row.name;
        EXPECT_TRUE(readPng(pngPath(row.name)) == picture.bytes) << pngPath(row.name);
#endif
    }
    EXPECT_FALSE(update) << "rewritten; run again without VX_UPDATE_GOLDEN";
}
