/* Visibility of the public interface. Everything else in the library is hidden. */
#ifndef MORVENN_NET_MVSERVERPROXY_EXPORT_H
#define MORVENN_NET_MVSERVERPROXY_EXPORT_H

#if defined(__GNUC__)
#define MVCPP_API __attribute__((visibility("default")))
#else
#define MVCPP_API
#endif

#endif /* MORVENN_NET_MVSERVERPROXY_EXPORT_H */
