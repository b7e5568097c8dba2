#include <gtest/gtest.h>

#include <set>

#include "engine/Catalogue.h"
#include "modules/BuiltTypes.h"

using namespace quillmer;

TEST(Catalogue, EveryTypeOnceWithItsOwnFamilyAndMenuEntry) {
    ASSERT_EQ(allTypes().size(), 189u);
    std::set<int> families;
    std::set<std::string_view> prefixes, inMenu;
    for (const TypeInfo& t : allTypes()) {
        EXPECT_EQ(&typeInfo(t.id), &t);
        EXPECT_EQ(t.prefix.back(), '-') << t.type;
        EXPECT_TRUE(prefixes.insert(t.prefix).second) << t.prefix;
        if (t.hasOutput()) {
            EXPECT_GE(t.busFamily, 2);
            EXPECT_LT(t.busFamily, 200);
            EXPECT_TRUE(families.insert(t.busFamily).second) << t.type;
        }
    }
    for (const MenuGroupInfo& g : menuGroups())
        for (std::string_view e : g.entries) {
            if (e == "-") continue;
            ASSERT_TRUE(typeIdByName(e)) << e;
            EXPECT_EQ(typeInfo(*typeIdByName(e)).group, g.group) << e;
            EXPECT_TRUE(inMenu.insert(e).second) << e;
        }
    EXPECT_EQ(inMenu.size(), 189u);
    EXPECT_EQ(menuGroups().size(), static_cast<size_t>(kMenuGroupCount));
    EXPECT_EQ(menuGroups()[1].caption, "Pickers");
    EXPECT_EQ(typeInfo(24).type, "Div");
    EXPECT_EQ(typeInfo(24).busFamily, 24);
    EXPECT_EQ(typeInfo(170).prefix, "Table-");
}

TEST(Catalogue, NoTypeRunsTwiceInATick) {
    std::set<ModuleTypeId> seen;
    for (ModuleTypeId id : passOrder()) {
        EXPECT_TRUE(seen.insert(id).second) << typeInfo(id).type;
        EXPECT_FALSE(runsOutsidePasses(id)) << typeInfo(id).type;
    }
    for (const auto* group : {&inputAndDisplayTypes(), &afterPassTypes(), &midiOutputTypes()})
        for (ModuleTypeId id : *group) EXPECT_TRUE(seen.insert(id).second) << typeInfo(id).type;
    EXPECT_EQ(typeInfo(passOrder().front()).type, "MouseOut");
    EXPECT_EQ(typeInfo(passOrder().back()).type, "ToneTbl");
}

TEST(Registry, EveryCatalogueTypeIsBuiltAndARegistryWithoutOneMakesPlaceholders) {
    const ModuleRegistry& r = builtTypes();
    for (ModuleTypeId id = 1; id <= kTypeCount; ++id) EXPECT_TRUE(r.isBuilt(id)) << typeInfo(id).type;
    ModuleRegistry fresh;
    EXPECT_FALSE(fresh.isBuilt(*typeIdByName("Image")));
    EXPECT_TRUE(fresh.make(*typeIdByName("Image"))->isPlaceholder());
    EXPECT_THROW(fresh.add("NoSuchType", [] { return nullptr; }), std::logic_error);
}
