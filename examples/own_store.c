/*
 * A program with its own store behind zxreg_*. The policy library leaves the nine operations of its store undefined;
 * a program that defines them takes the store over, whether or not another store library is loaded beside it. Link
 * such a program as any other: the linker exports the nine functions to the library by itself.
 *
 * This store is about as small as one can be: a tree in memory, each key with a list of its subkeys and a list of its
 * values, both in the order in which they were made. A store of your own may be a registry, a database or a
 * configuration service; what each operation has to do is said in zxregistry.h. What matters most:
 *   - a handle that was opened is closed once, and stays valid for that although its key was deleted meanwhile;
 *   - names may be paths, separated by backslashes, and the empty name is the key itself;
 *   - three reasons in the low 16 bits of a failure are looked at: 6 (the buffer is too small), 12 (no more items) and
 *     0x1804 (not found). All else of the codes is yours and passes through to the caller unchanged.
 *
 * The optional services (updates, stamps, identities) are left out. The library works without: each write is then
 * seen at once. This store is for one thread; with several, each using handles of its own, it would need a lock around
 * each operation. The program makes a rule in its store, decides for a mail, and prints what lies in the store.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <zxpolicy.h>
#include <zxregistry.h>

enum { OK = 0, FAILED = -0x7fff0000, TOO_SMALL = FAILED + 6, NO_MORE = FAILED + 12, NOT_FOUND = FAILED + 0x1804 };
enum { NO_MEMORY = FAILED + 0x100, NOT_EMPTY = FAILED + 0x101, BAD_NAME = FAILED + 0x102 };

/* A value, or a key: the subkeys and the values of a key hang in one list each. */
typedef struct Item {
    char name[ZXREG_MAX_NAME + 1];
    struct Item* next;
    struct Item* keys;
    struct Item* values;
    unsigned users; /* of a key: the handles open on it, and one for its place in the tree */
    uint32_t type;
    uint32_t size;
    void* data;
} Item;

static Item root = {.users = 1};

/* ---- items ---- */

static void release(Item* item) {
    if (--item->users > 0) return;
    while (item->keys != NULL) { /* made below a key that was deleted already */
        Item* key = item->keys;
        item->keys = key->next;
        release(key);
    }
    while (item->values != NULL) {
        Item* value = item->values;
        item->values = value->next;
        release(value);
    }
    free(item->data);
    free(item);
}

/* The place in the list where the item called `name` (of `length` bytes) hangs, or the end of the list. */
static Item** find(Item** place, const char* name, size_t length) {
    while (*place != NULL && (strlen((*place)->name) != length || memcmp((*place)->name, name, length) != 0))
        place = &(*place)->next;
    return place;
}

static Item** at(Item** place, uint32_t index) {
    while (*place != NULL && index-- > 0)
        place = &(*place)->next;
    return place;
}

static Item* append(Item** end, const char* name, size_t length) {
    Item* item = calloc(1, sizeof *item);
    if (item == NULL) return NULL;
    memcpy(item->name, name, length);
    item->users = 1;
    return *end = item;
}

static void remove_from(Item** place) {
    Item* item = *place;
    *place = item->next;
    release(item);
}

/*
 * Goes down a path. The place of its last name comes back, which may be the end of a list, and null when a level above
 * it is missing. A path that designates the key itself gives `self`.
 */
static Item** walk(Item** self, const char* path) {
    for (;;) {
        const size_t length = strcspn(path, "\\");
        if (length == 0) return self;
        if (*self == NULL) return NULL;
        self = find(&(*self)->keys, path, length);
        path += length;
        if (path[0] == '\0' || path[1] == '\0') return self;
        ++path;
    }
}

static const char* last_name(const char* path, size_t* length) {
    const char* name = path;
    for (*length = strcspn(name, "\\"); name[*length] != '\0' && name[*length + 1] != '\0';) {
        name += *length + 1;
        *length = strcspn(name, "\\");
    }
    return name;
}

/* ---- the nine operations ---- */

static _ZxPolComHandle* handle_of(Item* item, int* error) {
    _ZxPolComHandle* handle = malloc(sizeof *handle);
    *error = handle != NULL ? OK : NO_MEMORY;
    if (handle == NULL) return NULL;
    ++item->users;
    handle->kind = ZXREG_HANDLE_KEY;
    handle->object = item;
    return handle;
}

_ZxPolComHandle* zxreg_openKey(_ZxPolComHandle* key, const char* name, int* error) {
    Item* self = key->object;
    Item** place = walk(&self, name);
    *error = NOT_FOUND;
    return place != NULL && *place != NULL ? handle_of(*place, error) : NULL;
}

_ZxPolComHandle* zxreg_createKey(_ZxPolComHandle* key, const char* name, int* error) {
    Item* self = key->object;
    Item** place = walk(&self, name);
    size_t length = 0;
    const char* last = last_name(name, &length);
    *error = place == NULL ? NOT_FOUND : length > ZXREG_MAX_NAME ? BAD_NAME : NO_MEMORY;
    if (*error != NO_MEMORY || (*place == NULL && append(place, last, length) == NULL)) return NULL;
    return handle_of(*place, error);
}

void zxreg_closeKey(_ZxPolComHandle* key, int* error) {
    release(key->object);
    free(key);
    *error = OK;
}

void zxreg_deleteKey(_ZxPolComHandle* key, const char* name, int* error) {
    Item* self = key->object;
    Item** place = walk(&self, name);
    *error = NOT_FOUND;
    if (place == NULL || *place == NULL) return;
    *error = NOT_EMPTY;
    if (place == &self || (*place)->keys != NULL) return;
    remove_from(place);
    *error = OK;
}

/* Hands a value's bytes out; true when they fit or none are wanted. `*size` becomes their number. */
static bool deliver_data(const Item* value, void* data, uint32_t* size) {
    const bool fits = data == NULL || *size >= value->size;
    *size = value->size;
    if (data != NULL && fits && value->size > 0) memcpy(data, value->data, value->size);
    return fits;
}

/* Hands a name out, with its NUL; `*size` becomes its length without. */
static bool deliver_name(const Item* item, char* name, uint32_t* size) {
    const size_t length = strlen(item->name);
    const bool fits = *size > length;
    *size = (uint32_t)length;
    if (fits) memcpy(name, item->name, length + 1);
    return fits;
}

void zxreg_queryValue(_ZxPolComHandle* key, const char* name, uint32_t* type, void* data, uint32_t* size, int* error) {
    const Item* value = *find(&((Item*)key->object)->values, name, strlen(name));
    *error = NOT_FOUND;
    if (value == NULL) return;
    if (type != NULL) *type = value->type;
    *error = deliver_data(value, data, size) ? OK : TOO_SMALL;
}

void zxreg_setValue(_ZxPolComHandle* key, const char* name, uint32_t type, const void* data, uint32_t size,
                    int* error) {
    const size_t length = strlen(name);
    Item** place = find(&((Item*)key->object)->values, name, length);
    void* copy = malloc(size > 0 ? size : 1);
    *error = length > ZXREG_MAX_NAME ? BAD_NAME : NO_MEMORY;
    if (*error == BAD_NAME || copy == NULL || (*place == NULL && append(place, name, length) == NULL)) {
        free(copy);
        return;
    }
    if (size > 0) memcpy(copy, data, size);
    free((*place)->data);
    (*place)->data = copy;
    (*place)->size = size;
    (*place)->type = type;
    *error = OK;
}

void zxreg_deleteValue(_ZxPolComHandle* key, const char* name, int* error) {
    Item** place = find(&((Item*)key->object)->values, name, strlen(name));
    *error = *place != NULL ? OK : NOT_FOUND;
    if (*place != NULL) remove_from(place);
}

void zxreg_enumSubkey(_ZxPolComHandle* key, uint32_t index, char* name, uint32_t* size, int* error) {
    const Item* item = *at(&((Item*)key->object)->keys, index);
    *error = NO_MORE;
    if (item != NULL) *error = deliver_name(item, name, size) ? OK : TOO_SMALL;
}

void zxreg_enumValue(_ZxPolComHandle* key, uint32_t index, char* name, uint32_t* nameSize, uint32_t* type, void* data,
                     uint32_t* dataSize, int* error) {
    const Item* value = *at(&((Item*)key->object)->values, index);
    *error = NO_MORE;
    if (value == NULL) return;
    const bool dataFits = data == NULL || dataSize == NULL || *dataSize >= value->size;
    const bool nameFits = *nameSize > strlen(value->name);
    *error = dataFits && nameFits ? OK : TOO_SMALL;
    if (type != NULL) *type = value->type;
    if (dataSize != NULL) deliver_data(value, *error == OK ? data : NULL, dataSize);
    if (nameFits && !dataFits)
        *nameSize = (uint32_t)strlen(value->name);
    else
        deliver_name(value, name, nameSize);
}

/* ---- the program ---- */

static void print(const Item* key, int depth) {
    for (const Item* value = key->values; value != NULL; value = value->next) {
        printf("%*s%s = ", depth * 2, "", value->name);
        uint32_t number = 0;
        if (value->type == ZXREG_NUMBER) memcpy(&number, value->data, sizeof number);
        if (value->type == ZXREG_NUMBER)
            printf("%u\n", (unsigned)number);
        else
            printf("\"%s\"\n", (const char*)value->data);
    }
    for (const Item* sub = key->keys; sub != NULL; sub = sub->next) {
        printf("%*s%s\n", depth * 2, "", sub->name);
        print(sub, depth + 1);
    }
}

static void make_rule(_ZxPolComHandle* hive, int* error) {
    _ZxPolAddrPairCond pair = {.sender = "*@partner.example", .receiver = "*"};
    const unsigned char* conditions[] = {(const unsigned char*)&pair, NULL};
    _ZxPolRuleAttr attr = {.displayName = "Mail of partners"};
    _ZxPolComHandle* parent = zxpol_openRootRule(hive, error);
    _ZxPolComHandle* rule = zxpol_createRule(parent, "Partners", &attr, conditions, error);
    int closing = OK; /* closing reports its own success, and a null handle as a failure */
    zxpol_closeRule(rule, &closing);
    zxpol_closeRule(parent, &closing);
}

int main(void) {
    int error = OK;
    const char* receivers[] = {"bob@example.com", NULL};
    _ZxPolMatchPair* pairs = NULL;
    uint32_t count = 0;
    _ZxPolComHandle* store = handle_of(&root, &error);
    _ZxPolComHandle* rules = zxpol_openRuleHive(store, 0, &error);
    _ZxPolComHandle* lists = zxpol_openAddrListHive(store, &error);
    make_rule(rules, &error);
    zxpol_matchRuleByMailInfo(rules, lists, "ann@partner.example", receivers, &pairs, &count, &error);
    for (uint32_t i = 0; i < count; ++i)
        printf("%s takes %s\n", pairs[i].rulePath, pairs[i].receivers[0]);
    int closing = OK;
    zxpol_freeMatchPair(pairs, count, &closing);
    zxpol_closeAddrListHive(lists, &closing);
    zxpol_closeRuleHive(rules, &closing);
    if (store != NULL) zxreg_closeKey(store, &closing);
    if (ZX_FAILURE(error)) {
        fprintf(stderr, "own_store: result 0x%08x\n", (unsigned)error);
        return 1;
    }
    print(&root, 0);
    return 0;
}
