// Deleting a key takes no stack in proportion to the depth of what is below it.
#include <gtest/gtest.h>
#include <pthread.h>

#include <vector>

#include "fault/world.h"

namespace {

using namespace zxtest;

constexpr int kDepth = 3000;
constexpr size_t kStack = size_t{128} << 10;

// Makes keys one below the other, from the classification Clean on.
void makeDeep(const World& world) {
    int error = ZXREG_S_OK;
    std::vector<_ZxPolComHandle*> keys{zxreg_openKey(world.store, "Classification\\Clean", &error)};
    for (int depth = 0; depth < kDepth; ++depth) {
        keys.push_back(zxreg_createKey(keys.back(), "d", &error));
        ASSERT_GE(error, 0) << depth;
    }
    for (_ZxPolComHandle* key : keys)
        zxreg_closeKey(key, &error);
}

struct Deletion {
    World* world;
    int result;
};

void* deleteDeep(void* data) {
    auto* deletion = static_cast<Deletion*>(data);
    zxpol_deleteClassification(deletion->world->classHive, "Clean", &deletion->result);
    return nullptr;
}

TEST(DeepDeletion, FitsIntoASmallStack) {
    World world(Start::policy);
    makeDeep(world);
    pthread_attr_t attributes;
    ASSERT_EQ(0, pthread_attr_init(&attributes));
    ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, kStack));
    Deletion deletion{&world, ZXPOL_S_OK};
    pthread_t thread;
    ASSERT_EQ(0, pthread_create(&thread, &attributes, deleteDeep, &deletion));
    ASSERT_EQ(0, pthread_join(thread, nullptr));
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(ZXPOL_S_OK, deletion.result);
    EXPECT_EQ(std::string::npos, world.content().find("\\Clean\\"));
}

}  // namespace
