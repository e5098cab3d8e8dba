/*
 * Declarations the generated proxies use and mingw-w64's desktop headers leave out: the
 * IUnknown proxies that the RPC runtime exports for every interface's first three slots.
 */
#ifndef TESSALY_RPCFRAMES_PROXYPRELUDE_H
#define TESSALY_RPCFRAMES_PROXYPRELUDE_H

#include <objbase.h>

HRESULT STDMETHODCALLTYPE IUnknown_QueryInterface_Proxy(IUnknown* This, REFIID riid, void** ppvObject);
ULONG STDMETHODCALLTYPE IUnknown_AddRef_Proxy(IUnknown* This);
ULONG STDMETHODCALLTYPE IUnknown_Release_Proxy(IUnknown* This);

#endif
