// Services of the compiler's runtime; in one of the Windows builds a part of it is our own code.
#include <gtest/gtest.h>

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <thread>

namespace
{

int s_alive = 0;

/// Counts its objects, and marks destroyed ones.
class Counted : public std::runtime_error
{
public:
    explicit Counted(const char* text)
        : std::runtime_error(text)
    {
        ++s_alive;
    }
    Counted(const Counted& other)
        : std::runtime_error(other)
    {
        ++s_alive;
    }
    Counted& operator=(const Counted&) = delete;
    ~Counted() override { --s_alive; }
};

std::string TextOf(const std::exception_ptr& stored)
{
    try
    {
        std::rethrow_exception(stored);
    }
    catch (const Counted& error)
    {
        return error.what();
    }
}

TEST(Runtime, AStoredExceptionIsThrownRepeatedly)
{
    const char* const text = "a text that is too long for the inside of a string";
    {
        std::exception_ptr stored;
        std::thread other([&]
        {
            try
            {
                throw Counted(text);
            }
            catch (...)
            {
                stored = std::current_exception();
            }
        });
        other.join();
        for (int i = 0; i < 3; ++i)
        {
            EXPECT_EQ(TextOf(stored), text);
            EXPECT_EQ(s_alive, 1) << "only the stored one";
        }
    }
    EXPECT_EQ(s_alive, 0);
}

TEST(Runtime, ACharacterPrintsAsANumber)
{
    char text[64];
    // Not a literal: compilers warn of numbers that do not fit.
    const std::string format = "%hhd|%-4hhu|%0*hhX|%hd|%s|%.1f";
    std::snprintf(text, sizeof text, format.c_str(), 300, 511, 4, 0x1AB, 65535, "text", 1.5);
    EXPECT_STREQ(text, "44|255 |00AB|-1|text|1.5");
}

} // namespace
