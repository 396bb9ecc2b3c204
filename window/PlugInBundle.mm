#import "window/PlugInBundle.h"

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#import "Source/TavarinProLink_ViewControllerFactory.h"

namespace {

// The path of this very module tells where the bundle is.
std::string BundlePath() {
    Dl_info module{};
    if (dladdr(reinterpret_cast<void*>(&BundlePath), &module) == 0) return {};
    // A workstation may have named the module by a path from where it stood.
    const auto directory = std::filesystem::absolute(module.dli_fname).parent_path();
    return (directory / "TavarinProLink.bundle").string();
}

}  // namespace

CPlugInBundle::CPlugInBundle() {
    const std::string strPath = BundlePath();
    m_bundle = [[NSBundle bundleWithPath:[NSString stringWithUTF8String:strPath.c_str()]] retain];
    if (![m_bundle load]) throw std::runtime_error("There is no bundle of views at " + strPath);
    m_factory = [[[m_bundle principalClass] alloc] init];
    if (m_factory == nil) throw std::runtime_error("There is no factory in " + strPath);
}

CPlugInBundle& CPlugInBundle::Shared() {
    // Never destroyed: AppKit may be gone when the process ends.
    static CPlugInBundle* const pShared = new CPlugInBundle;
    return *pShared;
}

NSBitmapImageRep* CPlugInBundle::ImageNamed(NSString* name) const {
    NSString* path = [m_bundle pathForResource:name ofType:@"png"];
    if (path == nil) return nil;
    return [NSBitmapImageRep imageRepWithData:[NSData dataWithContentsOfFile:path]];
}

CPlugInController* CPlugInBundle::MakeController(PlugInKind kind) const {
    TavarinProLink_ViewControllerFactory* factory = m_factory;
    id controller = nil;
    switch (kind) {
        case PlugInKind::Link:
            controller = [factory LinkViewControllerFromBundle:m_bundle
                                              effectParameters:nullptr
                                                    controller:nullptr];
            break;
        case PlugInKind::APT:
            controller = [factory APTLinkViewControllerFromBundle:m_bundle
                                                 effectParameters:nullptr
                                                       controller:nullptr];
            break;
        case PlugInKind::Doubler:
            controller = [factory DoublerLinkViewControllerFromBundle:m_bundle
                                                     effectParameters:nullptr
                                                           controller:nullptr];
            break;
    }
    return controller;
}
