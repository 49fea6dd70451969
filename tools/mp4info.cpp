// SPDX-License-Identifier: GPL-3.0-or-later
// tavro-mp4info: what the player takes from MP4 and MOV files, and why.

#include "tools/MovieReport.h"

#include <QFile>
#include <QJsonDocument>

#include <getopt.h>

#include <cstdio>
#include <new>

namespace {
constexpr char kUsage[] =
    "Usage: tavro-mp4info [--json | --tree] FILE...\n"
    "Prints what the player takes from MP4 and MOV files, and where it comes from.\n"
    "\n"
    "  --json   one JSON object a line and file\n"
    "  --tree   the tree of atoms behind each file\n"
    "  --help   this text\n"
    "\n"
    "Exits with 0 when all files opened, else with 1.\n";

enum class Form {
    kText,
    kJson,
    kTree
};

bool printReport(const QString &path, Form form)
{
    const MovieReport report(path);
    const QByteArray text = form == Form::kJson
        ? QJsonDocument(report.toJson()).toJson(QJsonDocument::Compact) + '\n'
        : report.toText().toUtf8();
    std::fwrite(text.constData(), 1, static_cast<size_t>(text.size()), stdout);
    if (form == Form::kTree && report.opened()) {
        const std::string tree = report.treeToText();
        std::fwrite(tree.data(), 1, tree.size(), stdout);
    }
    // The library reports failures on standard error: keep both streams in order in a pipe.
    std::fflush(stdout);
    return report.opened();
}
} // namespace

int main(int argc, char **argv)
{
    const option options[] = {{"json", no_argument, nullptr, 'j'},
                              {"tree", no_argument, nullptr, 't'},
                              {"help", no_argument, nullptr, 'h'},
                              {nullptr, 0, nullptr, 0}};
    Form form = Form::kText;
    for (int option = 0; (option = getopt_long(argc, argv, "", options, nullptr)) != -1;) {
        switch (option) {
        case 'j':
        case 't': {
            const Form wanted = option == 'j' ? Form::kJson : Form::kTree;
            if (form != Form::kText && form != wanted) {
                std::fputs("tavro-mp4info: --json and --tree exclude each other\n", stderr);
                return 1;
            }
            form = wanted;
            break;
        }
        case 'h':
            std::fputs(kUsage, stdout);
            return 0;
        default:
            std::fputs(kUsage, stderr);
            return 1;
        }
    }
    if (optind == argc) {
        std::fputs(kUsage, stderr);
        return 1;
    }
    bool allOpened = true;
    for (int i = optind; i < argc; ++i) {
        try {
            allOpened = printReport(QFile::decodeName(argv[i]), form) && allOpened;
        } catch (const std::bad_alloc &) {
            std::fprintf(stderr, "tavro-mp4info: %s: not enough memory\n", argv[i]);
            allOpened = false;
        }
    }
    return allOpened ? 0 : 1;
}
