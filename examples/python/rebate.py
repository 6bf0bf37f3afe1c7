"""The rebate component from Python, through its shared library: one class, nothing but ctypes."""

import ctypes
import json


class RebateError(Exception):
    """What the component answered in the place of a result."""

    def __init__(self, error):
        super().__init__(f"{error['description']} ({error['source']}, {error['number']})")
        self.number = error["number"]


def _load(path):
    library = ctypes.CDLL(path)
    library.rebate_open.argtypes = [ctypes.c_char_p, ctypes.c_uint32, ctypes.POINTER(ctypes.c_uint64)]
    library.rebate_open.restype = ctypes.c_void_p  # the pointer itself, which rebate_free wants back
    library.rebate_call.argtypes = [ctypes.c_uint64, ctypes.c_char_p]
    library.rebate_call.restype = ctypes.c_void_p
    library.rebate_free.argtypes = [ctypes.c_void_p]
    library.rebate_free.restype = None
    library.rebate_close.argtypes = [ctypes.c_uint64]
    library.rebate_close.restype = None
    return library


class Session:
    """Calls on one account, from any thread, by one at a time: `session.call("BaseInfoMgr.GetRebateRange", lType=2040)`."""

    def __init__(self, dsn, library="librebate.so.1"):
        self._library = _load(library)
        self._number = ctypes.c_uint64()
        error = self._library.rebate_open(dsn.encode(), 0, ctypes.byref(self._number))
        if error:
            raise RebateError(self._take(error)["error"])

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._library.rebate_close(self._number)

    def call(self, op, **args):
        """The result of an operation; raises what the operation lets through."""
        request = json.dumps({"op": op, "args": args}, ensure_ascii=False)
        answer = self._take(self._library.rebate_call(self._number, request.encode()))
        if "error" in answer:
            raise RebateError(answer["error"])
        return answer["result"]

    def _take(self, text):
        try:
            return json.loads(ctypes.string_at(text))
        finally:
            self._library.rebate_free(text)
