// tarvoke-message: shows one message box of a script for the player, so
// that the player itself needs no widgets and starts in a few milliseconds.
// Usage: tarvoke-message FLAGS, with the title, one NUL byte and the text
// on standard input. Exits when the box is closed.

#include <QApplication>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/prctl.h>
#include <unistd.h>
#include <iostream>
#include <iterator>
#include <string>

#include "app/scriptmessages.h"

int main(int argc, char** argv) {
    // A box of a player that is gone (killed, say) answers no one: it goes
    // with the player. A player that died before this line is no longer the parent.
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (const char* parent = std::getenv("TARVOKE_MESSAGE_PARENT");
        parent && std::strtol(parent, nullptr, 10) != static_cast<long>(::getppid()))
        return 0;
    if (argc != 2) {
        std::fputs("usage: tarvoke-message FLAGS < title NUL text\n", stderr);
        return 2;
    }
    char* end = nullptr;
    const unsigned long flags = std::strtoul(argv[1], &end, 10);
    if (*argv[1] == '\0' || *end != '\0') {
        std::fprintf(stderr, "tarvoke-message: the flags '%s' are not a number\n", argv[1]);
        return 2;
    }
    const std::string input((std::istreambuf_iterator<char>(std::cin)), std::istreambuf_iterator<char>());
    const size_t split = input.find('\0');
    const std::string title = split == std::string::npos ? std::string() : input.substr(0, split);
    const std::string text = split == std::string::npos ? input : input.substr(split + 1);

    QApplication app(argc, argv);
    tarvoke::app::ScriptMessageBoxes().show(static_cast<uint32_t>(flags), title, text);
    return 0;
}
