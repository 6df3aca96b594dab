/**
 * @file
 * Visibility of the public interface. Everything else in the library is hidden.
 */
#ifndef MORVENN_NET_MVSERVERPROXY_EXPORT_H
#define MORVENN_NET_MVSERVERPROXY_EXPORT_H

#if defined(__GNUC__)
/** Marks a class or function of the public interface. */
#define MVCPP_API __attribute__((visibility("default")))
/** Marks a private member of a public class. */
#define MVCPP_LOCAL __attribute__((visibility("hidden")))
#else
#define MVCPP_API
#define MVCPP_LOCAL
#endif

#endif /* MORVENN_NET_MVSERVERPROXY_EXPORT_H */
