#!/usr/bin/env python3
"""Writes AES-CBC.txt: the sets of NIST's AES validation suite (AESAVS), and the examples of FIPS-197 and SP 800-38A.

The inputs are those that the suite lists or builds by rule; the results are OpenSSL's, through its libcrypto.
A line is "SET KEY IV PLAIN CIPHER" in hexadecimal. A line of a Monte Carlo set holds the first input and the
last result of a thousand chained operations.
"""
import ctypes
import ctypes.util
import random

crypto = ctypes.CDLL(ctypes.util.find_library("crypto"))
for size in (128, 192, 256):
    getattr(crypto, f"EVP_aes_{size}_cbc").restype = ctypes.c_void_p
crypto.EVP_CIPHER_CTX_new.restype = ctypes.c_void_p

GFSBOX = {
    128: "f34481ec3cc627bacd5dc3fb08f273e6 9798c4640bad75c7c3227db910174e72 96ab5c2ff612d9dfaae8c31f30c42168"
         " 6a118a874519e64e9963798a503f1d35 cb9fceec81286ca3e989bd979b0cb284 b26aeb1874e47ca8358ff22378f09144"
         " 58c8e00b2631686d54eab84b91f0aca1",
    192: "1b077a6af4b7f98229de786d7516b639 9c2d8842e5f48f57648205d39a239af1 bff52510095f518ecca60af4205444bb"
         " 51719783d3185a535bd75adc65071ce1 26aa49dcfe7629a8901a69a9914e6dfd 941a4773058224e1ef66d10e0a6ee782",
    256: "014730f80ac625fe84f026c60bfd547d 0b24af36193ce4665f2825d7b4749c98 761c1fe41a18acf20d241650611d90f1"
         " 8a560769d605868ad80d819bdba03771 91fbef2d15a97816060bee1feaa49afe",
}
KEYSBOX = {
    128: "10a58869d74be5a374cf867cfb473859 caea65cdbb75e9169ecd22ebe6e54675 a2e2fa9baf7d20822ca9f0542f764a41"
         " b6364ac4e1de1e285eaf144a2415f7a0 64cf9c7abc50b888af65f49d521944b2 47d6742eefcc0465dc96355e851b64d9"
         " 3eb39790678c56bee34bbcdeccf6cdb5 64110a924f0743d500ccadae72c13427 18d8126516f8a12ab1a36d9f04d68e51"
         " f530357968578480b398a3c251cd1093 da84367f325d42d601b4326964802e8e e37b1c6aa2846f6fdb413f238b089f23"
         " 6c002b682483e0cabcc731c253be5674 143ae8ed6555aba96110ab58893a8ae1 b69418a85332240dc82492353956ae0c"
         " 71b5c08a1993e1362e4d0ce9b22b78d5 e234cdca2606b81f29408d5f6da21206 13237c49074a3da078dc1d828bb78c6f"
         " 3071a2a48fe6cbd04f1a129098e308f8 90f42ec0f68385f2ffc5dfc03a654dce febd9a24d8b65c1c787d50a4ed3619a9",
    192: "e9f065d7c13573587f7875357dfbb16c53489f6a4bd0f7cd 15d20f6ebc7e649fd95b76b107e6daba967c8a9484797f29"
         " a8a282ee31c03fae4f8e9b8930d5473c2ed695a347e88b7c cd62376d5ebb414917f0c78f05266433dc9192a1ec943300"
         " 502a6ab36984af268bf423c7f509205207fc1552af4a91e5 25a39dbfd8034f71a81f9ceb55026e4037f8f6aa30ab44ce"
         " e08c15411774ec4a908b64eadc6ac4199c7cd453f3aaef53 3b375a1ff7e8d44409696e6326ec9dec86138e2ae010b980"
         " 950bb9f22cc35be6fe79f52c320af93dec5bc9c0c2f9cd53 7001c487cc3e572cfc92f4d0e697d982e8856fdcc957da40"
         " f029ce61d4e5a405b41ead0a883cc6a737da2cf50a6c92ae 61257134a518a0d57d9d244d45f6498cbc32f2bafc522d79"
         " b0ab0a6a818baef2d11fa33eac947284fb7d748cfb75e570 ee053aa011c8b428cdcc3636313c54d6a03cac01c71579d6"
         " d2926527e0aa9f37b45e2ec2ade5853ef807576104c7ace3 982215f4e173dfa0fcffe5d3da41c4812c7bcc8ed3540f93"
         " 98c6b8e01e379fbd14e61af6af891596583565f2a27d59e9 b3ad5cea1dddc214ca969ac35f37dae1a9a9d1528f89bb35"
         " 45899367c3132849763073c435a9288a766c8b9ec2308516 ec250e04c3903f602647b85a401a1ae7ca2f02f67fa4253e"
         " d077a03bd8a38973928ccafe4a9d2f455130bd0af5ae46a9 d184c36cf0dddfec39e654195006022237871a47c33d3198"
         " 4c6994ffa9dcdc805b60c2c0095334c42d95a8fc0ca5b080 c88f5b00a4ef9a6840e2acaf33f00a3bdc4e25895303fa72",
    256: "c47b0294dbbbee0fec4757f22ffeee3587ca4730c3d33b691df38bab076bc558"
         " 28d46cffa158533194214a91e712fc2b45b518076675affd910edeca5f41ac64"
         " c1cc358b449909a19436cfbb3f852ef8bcb5ed12ac7058325f56e6099aab1a1c"
         " 984ca75f4ee8d706f46c2d98c0bf4a45f5b00d791c2dfeb191b5ed8e420fd627"
         " b43d08a447ac8609baadae4ff12918b9f68fc1653f1269222f123981ded7a92f"
         " 1d85a181b54cde51f0e098095b2962fdc93b51fe9b88602b3f54130bf76a5bd9"
         " dc0eba1f2232a7879ded34ed8428eeb8769b056bbaf8ad77cb65c3541430b4cf"
         " f8be9ba615c5a952cabbca24f68f8593039624d524c816acda2c9183bd917cb9"
         " 797f8b3d176dac5b7e34a2d539c4ef367a16f8635f6264737591c5c07bf57a3e"
         " 6838d40caf927749c13f0329d331f448e202c73ef52c5f73a37ca635d4c47707"
         " ccd1bc3c659cd3c59bc437484e3c5c724441da8d6e90ce556cd57d0752663bbc"
         " 13428b5e4c005e0636dd338405d173ab135dec2a25c22c5df0722d69dcc43887"
         " 07eb03a08d291d1b07408bf3512ab40c91097ac77461aad4bb859647f74f00ee"
         " 90143ae20cd78c5d8ebdd6cb9dc1762427a96c78c639bccc41a61424564eafe1"
         " b7a5794d52737475d53d5a377200849be0260a67a2b22ced8bbef12882270d07"
         " fca02f3d5011cfc5c1e23165d413a049d4526a991827424d896fe3435e0bf68e",
}
SP800_38A = {
    128: "2b7e151628aed2a6abf7158809cf4f3c",
    192: "8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b",
    256: "603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4",
}
SP800_38A_PLAIN = ("6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
                   "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710")


class CBC:
    """One key; each call is a message of its own without padding."""

    def __init__(self, key, encrypting):
        self.context = ctypes.c_void_p(crypto.EVP_CIPHER_CTX_new())
        self.kind = ctypes.c_void_p(getattr(crypto, f"EVP_aes_{8 * len(key)}_cbc")())
        self.key, self.encrypting = key, encrypting

    def __call__(self, iv, text):
        crypto.EVP_CipherInit_ex(self.context, self.kind, None, self.key, iv, int(self.encrypting))
        crypto.EVP_CIPHER_CTX_set_padding(self.context, 0)
        out, size = ctypes.create_string_buffer(len(text) + 16), ctypes.c_int()
        crypto.EVP_CipherUpdate(self.context, out, ctypes.byref(size), text, len(text))
        return out.raw[:size.value]


def monte_carlo(name, key, iv, text, encrypting):
    """AESAVS 6.4.2: a hundred rounds of a thousand operations, each fed by the results before it."""
    for _ in range(100):
        operation, first_iv, first_text = CBC(key, encrypting), iv, text
        result = previous = b""
        chain = iv
        for j in range(1000):
            previous, result = result, operation(chain, text)
            if encrypting:
                chain, text = result, iv if j == 0 else previous
            else:
                chain, text = text, iv if j == 0 else previous
        pair = (first_text, result) if encrypting else (result, first_text)
        yield name, key, first_iv, *pair
        mask = (previous + result)[-len(key):]
        key = bytes(a ^ b for a, b in zip(key, mask))
        iv, text = result, previous


def lines():
    zero = bytes(16)
    draw = random.Random(1)
    for bits in (128, 192, 256):
        size = bits // 8
        known = [("GFSbox", bytes(size), zero, bytes.fromhex(text)) for text in GFSBOX[bits].split()]
        known += [("KeySbox", bytes.fromhex(key), zero, zero) for key in KEYSBOX[bits].split()]
        known += [("VarKey", ((1 << bits) - (1 << (bits - 1 - i))).to_bytes(size, "big"), zero, zero)
                  for i in range(bits)]
        known += [("VarTxt", bytes(size), zero, ((1 << 128) - (1 << (127 - i))).to_bytes(16, "big"))
                  for i in range(128)]
        known += [("MultiBlock", draw.randbytes(size), draw.randbytes(16), draw.randbytes(16 * blocks))
                  for blocks in range(1, 11)]
        known += [("FIPS-197", bytes(range(size)), zero, bytes.fromhex("00112233445566778899aabbccddeeff")),
                  ("SP800-38A", bytes.fromhex(SP800_38A[bits]), bytes(range(16)), bytes.fromhex(SP800_38A_PLAIN))]
        for name, key, iv, plain in known:
            yield name, key, iv, plain, CBC(key, True)(iv, plain)
        for name, encrypting in (("MonteCarloEncrypt", True), ("MonteCarloDecrypt", False)):
            yield from monte_carlo(name, draw.randbytes(size), draw.randbytes(16), draw.randbytes(16), encrypting)


if __name__ == "__main__":
    with open("AES-CBC.txt", "w", encoding="ascii") as out:
        for name, *values in lines():
            print(name, *(value.hex() for value in values), file=out)
