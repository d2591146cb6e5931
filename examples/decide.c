/*
 * Decides for one mail: which rule of a policy applies to each receiver, and which tasks that rule asks for. This is
 * what a mail filter does for every mail that it takes in.
 *
 *     decide STORE SENDER RECEIVER...        decide sqlite:policy.db ann@partner.example bob@example.com
 *
 * The policy lies in a store. zxreg_openStore opens it and returns its root key; the library opens the hive of the
 * rules and the hive of the address lists below that key. One call then answers for all receivers at once: it returns
 * one record for each rule that matched, with the receivers that it matched and the tasks that apply to them, in the
 * order in which they are to be done. A receiver that no rule matched is in none of the records.
 *
 * Note the result argument: a call that finds a failure in it does nothing and leaves it there, so that a program may
 * make all its calls and test once. Closing and freeing are done all the same, and no answer at all is not the same as
 * the answer that no rule applies: a filter that was given a failure must not let the mail through unfiltered. Nor is
 * an empty store a policy: opening the hives would make a root rule there that matches every mail and asks for nothing.
 * So the program looks first whether there is a root rule.
 */
#include <stdio.h>
#include <zxpolicy.h>
#include <zxregistry.h>

static void print_task(_ZxPolComHandle* task, int* error) {
    _ZxPolTaskAttr attr = {.order = 0};
    zxpol_getTaskAttrib(task, &attr, error);
    if (ZX_FAILURE(*error)) return;
    printf("    %s (filter %u)\n", attr.displayName, (unsigned)attr.filter);
    zxreg_closeKey(attr.setting, error); /* the key of the task's settings is opened for the caller */
}

static void print_pair(const _ZxPolMatchPair* pair, int* error) {
    printf("%s\n", pair->rulePath);
    for (char** receiver = pair->receivers; *receiver != NULL; ++receiver)
        printf("  for %s\n", *receiver);
    for (uint32_t i = 0; i < pair->taskCount; ++i)
        print_task(pair->tasks[i], error);
}

/* Fails when the store holds no policy. */
static void require_policy(_ZxPolComHandle* store, int* error) {
    _ZxPolComHandle* root = zxreg_openKey(store, "Rule\\Mail", error);
    if (root != NULL) zxreg_closeKey(root, error);
}

static void decide(_ZxPolComHandle* store, const char* sender, const char** receivers, int* error) {
    _ZxPolMatchPair* pairs = NULL;
    uint32_t count = 0;
    require_policy(store, error);
    if (ZX_FAILURE(*error)) return;
    _ZxPolComHandle* rules = zxpol_openRuleHive(store, 0, error);
    _ZxPolComHandle* lists = zxpol_openAddrListHive(store, error);
    zxpol_matchRuleByMailInfo(rules, lists, sender, receivers, &pairs, &count, error);
    for (uint32_t i = 0; i < count; ++i)
        print_pair(&pairs[i], error);
    const int result = *error; /* closing reports its own success */
    zxpol_freeMatchPair(pairs, count, error);
    zxpol_closeAddrListHive(lists, error);
    zxpol_closeRuleHive(rules, error);
    if (ZX_FAILURE(result)) *error = result;
}

int main(int argc, char** argv) {
    if (argc < 4) {
        fprintf(stderr, "usage: decide STORE SENDER RECEIVER...\n");
        return 2;
    }
    int error = ZXPOL_S_OK;
    int closing = ZXPOL_S_OK;
    _ZxPolComHandle* store = zxreg_openStore(argv[1], &error);
    if (ZX_SUCCESS(error)) {
        decide(store, argv[2], (const char**)&argv[3], &error); /* argv ends with a null pointer, as receivers do */
        zxreg_closeKey(store, &closing);
    }
    if (ZX_SUCCESS(error)) return 0;
    fprintf(stderr, "decide: result 0x%08x\n", (unsigned)error);
    return 1;
}
