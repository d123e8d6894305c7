#include "kest/PipeStream.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/kest/Children.h"

namespace kest {
namespace {

class PipeStreamTest : public testing::Test {
  protected:
    PipeStreamTest() {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        stream_.open(Descriptor(ends[0]));
        writeEnd_ = Descriptor(ends[1]);
    }

    void write(const std::string& bytes) {
        ASSERT_EQ(::write(writeEnd_.number(), bytes.data(), bytes.size()),
                  static_cast<ssize_t>(bytes.size()));
    }

    PipeStream stream_;
    Descriptor writeEnd_;
};

TEST_F(PipeStreamTest, DeliversBytesAsTheyWereWritten) {
    write("a\n");
    EXPECT_EQ(stream_.read(), 'a');
    EXPECT_EQ(stream_.read(), '\n');
    write(std::string("\0\x7F\x80\xFF", 4));
    EXPECT_EQ(stream_.read(), 0);
    EXPECT_EQ(stream_.read(), 0x7F);
    EXPECT_EQ(stream_.read(), 0x80);
    EXPECT_EQ(stream_.read(), 0xFF);
}

TEST_F(PipeStreamTest, TheEndStaysTheEnd) {
    write("x");
    writeEnd_.close();
    EXPECT_EQ(stream_.read(), 'x');
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(stream_.read(), -1);
        EXPECT_EQ(stream_.readSome(), "");
    }
}

TEST_F(PipeStreamTest, ReadSomeDeliversAllThatHasArrived) {
    write("one\ntwo");
    EXPECT_EQ(stream_.readSome(), "one\ntwo");
    write("three");
    EXPECT_EQ(stream_.readSome(), "three");
    writeEnd_.close();
    EXPECT_EQ(stream_.readSome(), "");
}

TEST_F(PipeStreamTest, BothOperationsTakeFromOneStream) {
    write("abc");
    EXPECT_EQ(stream_.read(), 'a');
    EXPECT_EQ(stream_.readSome(), "bc");
    write("d");
    EXPECT_EQ(stream_.read(), 'd');
    writeEnd_.close();
    EXPECT_EQ(stream_.readSome(), "");
    EXPECT_EQ(stream_.read(), -1);
}

TEST_F(PipeStreamTest, AFailedReadingIsTheEndAndClosesThePipe) {
    const test::NothingLeft nothingLeft;
    PipeStream stream;
    stream.open(Descriptor(open("/", O_RDONLY | O_CLOEXEC)));
    EXPECT_EQ(stream.read(), -1);
    EXPECT_EQ(stream.read(), -1);
    EXPECT_EQ(stream.readSome(), "");
}

class PipeStreamEndTest : public testing::Test {
  protected:
    PipeStreamEndTest() {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        writerEnded_ = Descriptor(ends[0]);
        endOfWriter_ = Descriptor(ends[1]);
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        stream_.open(Descriptor(ends[0]), writerEnded_.number());
        writeEnd_ = Descriptor(ends[1]);
    }

    static void write(const Descriptor& descriptor, const std::string& bytes) {
        ASSERT_EQ(::write(descriptor.number(), bytes.data(), bytes.size()),
                  static_cast<ssize_t>(bytes.size()));
    }

    PipeStream stream_;
    Descriptor writeEnd_;
    Descriptor writerEnded_;
    Descriptor endOfWriter_;
};

TEST_F(PipeStreamEndTest, WhatTheWriterLeftIsDeliveredAndThenTheStreamEnds) {
    write(writeEnd_, "abc");
    EXPECT_EQ(stream_.readSome(), "abc");
    write(writeEnd_, "defg");
    write(endOfWriter_, "!");
    EXPECT_EQ(stream_.read(), 'd');
    write(writeEnd_, "too late");
    EXPECT_EQ(stream_.readSome(), "efg");
    EXPECT_EQ(stream_.readSome(), "");
    EXPECT_EQ(stream_.read(), -1);
}

TEST_F(PipeStreamEndTest, AWriterThatLeftNothingEndsTheStream) {
    write(endOfWriter_, "!");
    EXPECT_EQ(stream_.read(), -1);
}

TEST_F(PipeStreamEndTest, AClosedPipeEndsTheStreamBeforeTheWritersEnd) {
    write(writeEnd_, "a");
    writeEnd_.close();
    EXPECT_EQ(stream_.readSome(), "a");
    EXPECT_EQ(stream_.read(), -1);
}

TEST_F(PipeStreamEndTest, ThePipeIsReadUntilItIsClosedIfTheEndIsNeverReported) {
    endOfWriter_.close();
    write(writeEnd_, "abc");
    EXPECT_EQ(stream_.readSome(), "abc");
    write(writeEnd_, "def");
    EXPECT_EQ(stream_.readSome(), "def");
    writeEnd_.close();
    EXPECT_EQ(stream_.readSome(), "");
}

TEST(PipeStream, WithoutAPipeIsAtItsEnd) {
    PipeStream stream;
    EXPECT_EQ(stream.read(), -1);
    EXPECT_EQ(stream.readSome(), "");
}

}  // namespace
}  // namespace kest
