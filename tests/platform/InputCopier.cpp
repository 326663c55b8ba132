// Copies standard input to a file, or reads only its first byte: input_copier FILE [1].
#include "platform/console.h"

#include <cstdio>

int main(int count, char** arguments)
{
    zeb::platform::PrepareConsole();
    FILE* file = count < 2 ? nullptr : std::fopen(arguments[1], "wb");
    if (file == nullptr)
    {
        return 3;
    }
    for (int byte = std::getchar(); byte != EOF; byte = std::getchar())
    {
        std::fputc(byte, file);
        if (count > 2)
        {
            break;
        }
    }
    return std::fclose(file) == 0 ? 0 : 3;
}
