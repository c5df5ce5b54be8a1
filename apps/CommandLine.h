#pragma once

#include <CLI/CLI.hpp>

#include <apps/convert.h>
#include <apps/info.h>
#include <apps/offline/render.h>
#include <apps/viewport/view.h>

namespace rq::app
{
/// The subcommands and options of the program, and where what they are told ends up.
///
/// It is their only description: the help, the man page and the completion of shells are made from it.
struct CommandLine
{
    CommandLine();
    CommandLine(const CommandLine &) = delete;
    CommandLine &operator=(const CommandLine &) = delete;

    CommonOptions common;
    InfoOptions info;
    ConvertOptions convert;
    RenderOptions render;
    ViewOptions view;
    std::string shell;    ///< whose completion is asked for
    bool manual = false;  ///< the man page is asked for

    CLI::App program{"Render-ready geometry from files", "rq"};
    const CLI::App *infoCommand = nullptr;
    const CLI::App *convertCommand = nullptr;
    const CLI::App *renderCommand = nullptr;
    const CLI::App *viewCommand = nullptr;
};
}  // namespace rq::app
