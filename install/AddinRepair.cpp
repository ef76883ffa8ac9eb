#include "install/AddinRepair.h"

#include "core/RegistryEntry.h"

#include <array>

namespace {

struct Setting {
    const wchar_t* subkey;
    /// Null: the whole key.
    const wchar_t* valueName;
};

constexpr std::array Settings{
    Setting{LR"(Software\Microsoft\Office\14.0\OneNote\Resiliency\DisabledItems)", nullptr},
    Setting{LR"(Software\Microsoft\Office\15.0\OneNote\Resiliency\DisabledItems)", nullptr},
    Setting{LR"(Software\Microsoft\Office\16.0\OneNote\Resiliency\DisabledItems)", nullptr},
    Setting{LR"(Software\Microsoft\Office\14.0\OneNote\Security)", L"DisableAllAddins"},
    Setting{LR"(Software\Microsoft\Office\15.0\OneNote\Security)", L"DisableAllAddins"},
    Setting{LR"(Software\Microsoft\Office\16.0\OneNote\Security)", L"DisableAllAddins"},
    Setting{LR"(Software\Microsoft\Office\OneNote\AddIns\Vellumkit.Addin)", L"LoadBehavior"},
};

} // namespace

void RepairAddinSettings() {
    for (const Setting& setting : Settings)
        RegistryEntry{.root = HKEY_CURRENT_USER, .subkey = setting.subkey, .valueName = setting.valueName}.Delete();
}
