#include "core/key_reader.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

// Reads `text` token by token, offering each token to `offer`, until the end.
template <class Offer>
int ReadAll(const std::string& text, Offer offer) {
    FILE* f = fmemopen(const_cast<char*>(text.data()), text.size(), "r");
    CKeyReader reader(f);
    int tokens = 0;
    try {
        for (;;) {
            reader.Next();
            ++tokens;
            offer(reader);
        }
    } catch (const CKeyReader::EndOfFile&) {
    }
    std::fclose(f);
    return tokens;
}

}  // namespace

TEST(KeyReader, KeyedValues) {
    int i = 0, a = 0, b = 0, c = 0;
    float f = 0, g = 0, h = 0;
    unsigned x = 0;
    std::string s;
    char field[8] = {};
    const std::string text =
        "\n// comment words\nn= 5\npair= 1 2\ntriple= 7 8 9\nscale= 2.5\nrange= -1 3.25 4\n"
        "colour= ff00ff\nname=   two words here  \r\nshort= abcdefghijk\nother= 1\n";
    ReadAll(text, [&](CKeyReader& r) {
        r.Int("n=", &i) || r.Int2("pair=", &a, &b) || r.Int3("triple=", &a, &b, &c) ||
            r.Float("scale=", &f) || r.Float3("range=", &f, &g, &h) || r.Hex("colour=", &x) ||
            r.String("name=", &s) || r.Chars("short=", field, sizeof field);
    });
    EXPECT_EQ(i, 5);
    EXPECT_EQ(a, 7);
    EXPECT_EQ(c, 9);
    EXPECT_EQ(f, -1.0f);
    EXPECT_EQ(h, 4.0f);
    EXPECT_EQ(x, 0xff00ffu);
    EXPECT_EQ(s, "two words here");
    EXPECT_STREQ(field, "abcdefg");
}

TEST(KeyReader, MismatchedKeysReadNothing) {
    int v = 42;
    const int tokens = ReadAll("a= 1\n", [&](CKeyReader& r) { EXPECT_EQ(r.Int("b=", &v), 0); });
    EXPECT_EQ(tokens, 2);
    EXPECT_EQ(v, 42);
}

TEST(KeyReader, TruncatedAndBinaryInputEndsCleanly) {
    int v = 0;
    // The value is missing at the end of the file: the read stops there.
    ReadAll("n= 3\nm=", [&](CKeyReader& r) { r.Int("n=", &v) || r.Int("m=", &v); });
    EXPECT_EQ(v, 3);

    std::string blob(4096, '\0');
    for (size_t k = 0; k < blob.size(); ++k) blob[k] = static_cast<char>((k * 7919) & 0xff);
    int seen = 0;
    ReadAll(blob, [&](CKeyReader& r) { seen += r.Int("n=", &v); });
    EXPECT_EQ(seen, 0);
}
