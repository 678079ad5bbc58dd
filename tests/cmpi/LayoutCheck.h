// How the checks of the CMPI layout, one for each level, report to the test.
#ifndef ZELSENSORS_TESTS_LAYOUTCHECK_H
#define ZELSENSORS_TESTS_LAYOUTCHECK_H

#ifdef __cplusplus
extern "C" {
#endif

// Gets each figure of layout.tsv that holds at the level, and what the compiler made of our declarations.
typedef void LayoutCheck(const char* what, long long expected, long long actual);

void checkLayoutAtLevel100(LayoutCheck* check);
void checkLayoutAtLevel200(LayoutCheck* check);
void checkLayoutAtLevel210(LayoutCheck* check);

#ifdef __cplusplus
}
#endif

#endif  // ZELSENSORS_TESTS_LAYOUTCHECK_H
