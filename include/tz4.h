/* tz4: engine library of a transient circuit simulator.
 *
 * Every function reports through one process-wide text that TZ4_GetError
 * returns: "OK" after success, or the function's name, ": " and the reasons
 * after a failure. Handles of documents and traces are non-negative ints,
 * unique across both and never reused. One host thread at a time.
 */
#ifndef TZ4_H
#define TZ4_H

#if defined(_WIN32)
#define TZ4_API __declspec(dllexport)
#else
#define TZ4_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Frame, documents and handles. */
TZ4_API const char* TZ4_GetError(void);
TZ4_API const char* TZ4_GetInfo(void);
TZ4_API int TZ4_GetLicense(void);
TZ4_API int TZ4_Open(const char* name);
TZ4_API int TZ4_Save(int ncir);
TZ4_API int TZ4_SaveAs(int ncir, const char* name);
TZ4_API int TZ4_Close(int ncir);

#ifdef __cplusplus
}
#endif

#endif
