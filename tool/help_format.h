#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace vrltool {

/// How --help looks: the usage line names what is required, and values are told in words.
class HelpFormat : public CLI::Formatter {
 public:
    HelpFormat();
    std::string make_usage(const CLI::App* app, std::string name) const override;
    std::string make_option_opts(const CLI::Option* option) const override;
    std::string make_option_desc(const CLI::Option* option) const override;
};

}  // namespace vrltool
