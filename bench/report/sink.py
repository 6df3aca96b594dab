"""A server that takes a whole chunked body before it answers, which nginx by itself does not."""
import contextlib
import socket
import ssl
import threading

ANSWER = b"HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nContent-Length: 5\r\n\r\ntaken"
CONTINUE = b"HTTP/1.1 100 Continue\r\n\r\n"
END = b"0\r\n\r\n"


def read_head(connection):
    head = b""
    while b"\r\n\r\n" not in head:
        piece = connection.recv(4096)
        if not piece:
            return None, b""
        head += piece
    head, _, rest = head.partition(b"\r\n\r\n")
    return head.lower(), rest


def serve(connection):
    """One exchange after the other. The end of a body is known by the last chunk's five bytes."""
    buffer = bytearray(1 << 18)
    with connection:
        while True:
            head, tail = read_head(connection)
            if head is None:
                return
            if b"expect: 100-continue" in head and not tail:
                connection.sendall(CONTINUE)
            while not tail.endswith(END):
                count = connection.recv_into(buffer)
                if count == 0:
                    return
                tail = (tail + bytes(buffer[max(0, count - len(END)):count]))[-len(END):]
            connection.sendall(ANSWER)


def accept(listener, context):
    with contextlib.suppress(OSError):  # the listener is closed at the end
        while True:
            connection, _ = listener.accept()
            connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            if context is not None:
                connection = context.wrap_socket(connection, server_side=True)
            threading.Thread(target=serve, args=(connection,), daemon=True).start()


@contextlib.contextmanager
def running(certificate, key):
    """Gives the http and the https port."""
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(certificate, key)
    with socket.create_server(("127.0.0.1", 0)) as plain, \
            socket.create_server(("127.0.0.1", 0)) as tls:
        for listener, use in ((plain, None), (tls, context)):
            threading.Thread(target=accept, args=(listener, use), daemon=True).start()
        yield plain.getsockname()[1], tls.getsockname()[1]
        for listener in (plain, tls):
            listener.shutdown(socket.SHUT_RDWR)
