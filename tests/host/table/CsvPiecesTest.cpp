#include "host/table/CsvPieces.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarn {
namespace {

using Texts = std::vector<std::string>;

/// All pieces of a text that begins with `rest`, which is read already.
Texts PiecesOf(const std::string& text, std::size_t pieceSize, std::size_t rest = 0) {
    ByteSource source = ByteSource::FromMemory("data.csv", text.substr(rest));
    CsvPieces pieces(source, std::string_view(text).substr(0, rest), false, pieceSize);
    Texts texts;
    CsvPiece piece;
    while (pieces.Next(piece)) {
        EXPECT_EQ(piece.Number(), texts.size());
        texts.emplace_back(piece.Text());
    }
    EXPECT_FALSE(pieces.Next(piece)) << "it stays at the end";
    return texts;
}

TEST(CsvPieces, AreCutBehindTheLastRowThatFits) {
    EXPECT_EQ(PiecesOf("ab\ncd\nef\n", 7), (Texts{"ab\ncd\n", "ef\n"}));
    EXPECT_EQ(PiecesOf("ab\ncd\nef", 6), (Texts{"ab\ncd\n", "ef"}));
    EXPECT_EQ(PiecesOf("ab\r\ncd\r\n", 4), (Texts{"ab\r\n", "cd\r\n"}));
    EXPECT_EQ(PiecesOf("", 4), Texts{});
}

TEST(CsvPieces, GrowWithARowThatIsLonger) {
    EXPECT_EQ(PiecesOf("a\nbcdefghi\nj\n", 2), (Texts{"a\n", "bcdefghi\nj\n"})) << "16 bytes at a time by then";
}

TEST(CsvPieces, ALineBreakWithinQuotesIsNoBorder) {
    EXPECT_EQ(PiecesOf("0\n1,\"a\nb\"\n2,c\n", 7), (Texts{"0\n", "1,\"a\nb\"\n2,c\n"}));
    EXPECT_EQ(PiecesOf("0\n1,\"a\"\"\nb\"\n2,c\n", 9), (Texts{"0\n", "1,\"a\"\"\nb\"\n2,c\n"}));
    EXPECT_EQ(PiecesOf("1,\"a\nb\"\n2,c\n", 9), (Texts{"1,\"a\nb\"\n", "2,c\n"}));
}

TEST(CsvPieces, TheFirstOneIsWhatIsReadAlready) {
    EXPECT_EQ(PiecesOf("ab\ncd\nef\ngh\n", 100, 7), (Texts{"ab\ncd\n", "ef\ngh\n"}));
    EXPECT_EQ(PiecesOf("abcd\nef\n", 100, 2), (Texts{"abcd\nef\n"}));
}

TEST(CsvPieces, JoinedTheyAreTheInput) {
    const std::string text = "1,2\n\"a\nb\",\"\"\"\"\n\n3,4\r\n\"c,\n\nd\"\n5,\"\"\n6,7";
    for (std::size_t size = 1; size < 40; ++size) {
        for (std::size_t rest = 0; rest < text.size(); ++rest) {
            std::string joined;
            for (const std::string& piece : PiecesOf(text, size, rest)) joined += piece;
            ASSERT_EQ(joined, text) << size << " " << rest;
        }
    }
}

TEST(CsvPieces, TheLastLineFeedIsAddedWhereTheInputLacksIt) {
    ByteSource source = ByteSource::FromMemory("data.csv", "a\nb\r");
    CsvPieces pieces(source, "", false, 100);
    CsvPiece piece;
    ASSERT_TRUE(pieces.Next(piece));
    EXPECT_EQ(std::string(piece.Begin(), piece.End()), "a\nb\r\n");
    EXPECT_EQ(piece.AddedLineFeed(), piece.End() - 1);
    EXPECT_EQ(piece.Text(), "a\nb\r");
}

// A quote at a wrong place would make all of the input one piece, if it was only counted.
TEST(CsvPieces, AreNotReadToTheEndForAQuoteAtAWrongPlace) {
    std::string text = "1,2\n3,5\" pipe\n";
    for (int i = 0; i < 1000; ++i) text += "4,5\n";
    const Texts pieces = PiecesOf(text, 16);
    ASSERT_EQ(pieces.size(), 2u) << "and nothing behind it";
    EXPECT_EQ(pieces[0], "1,2\n");
    EXPECT_LT(pieces[1].size(), 40u);
}

}  // namespace
}  // namespace tarn
