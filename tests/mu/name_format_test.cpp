#include <gtest/gtest.h>

#include <string>

#include "mu/name_format.h"

namespace {

TEST(FormatOutputName, FormatsBaseAndCount) {
    struct Case {
        const char* format;
        const char* base;
        int count;
        const char* name;   // "" when refused
        const char* error;  // when refused
    } cases[] = {
        {"lfe_stiff%02d", "", 3, "lfe_stiff03", ""},
        {"%s_mu%02d", "liver", 1, "liver_mu01", ""},
        {"quelmor.mask", "x", 4, "quelmor.mask", ""},
        {"%s.%s_%d", "a", 12, "a.a_12", ""},
        {"r%%d%02x", "", 255, "", "invalid output name: r%dff"},
        {"%s%d%d", "b", 1, "", "invalid name format: %s%d%d"},
        {"%s", "", 1, "", "invalid output name: "},
        {"amp_%f", "", 1, "", "invalid name format: amp_%f"},
        {"amp_%n", "", 1, "", "invalid name format: amp_%n"},
        {"amp_%ld", "", 1, "", "invalid name format: amp_%ld"},
        {"amp_%*d", "", 1, "", "invalid name format: amp_%*d"},
        {"amp_%", "", 1, "", "invalid name format: amp_%"},
        {"%s_%02d", "9lives", 1, "", "invalid output name: 9lives_01"},
        {"%s_%02d", "my liver", 1, "", "invalid output name: my liver_01"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.format);
        std::string error;
        EXPECT_EQ(FormatOutputName(c.format, c.base, c.count, &error), c.name);
        EXPECT_EQ(error, c.error);
    }
}

}  // namespace
