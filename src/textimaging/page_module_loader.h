// Finds and loads the page renderer's module.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/page_module.h"
#include "util/log/result.h"

namespace skarnel {

/// File name of the module.
inline constexpr const char* kPageModuleName = "libskarnel-page.so";

/// Where it is looked for, in this order: the environment's SKARNEL_PAGE_MODULE (a full path, and
/// then nowhere else), beside the program in ../lib/skarnel, and the installation's folder.
std::vector<std::string> pageModulePaths();

/// Loads the module at the first of the paths where there is a file. NotFound when there is none,
/// Failed when it cannot be loaded (the message has the linker's reason) or is of another version.
Result<std::unique_ptr<PageModule>> loadPageModule(
    const PageModuleContext& context, const std::vector<std::string>& paths = pageModulePaths());

}  // namespace skarnel
