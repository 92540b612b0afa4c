// Diffie-Hellman with a peer, and DES with the shared key: for existing peers only. Neither
// protects anything today (see the headers).
#include <vnbytstr/vnbytstr.h>

#include <cstdio>

namespace {

// RFC 2409, the first Oakley group: 768 bits, generator 2.
constexpr char kModulus[] = "FFFFFFFFFFFFFFFFC90FDAA22168C234C4C6628B80DC1CD129024E088A67CC74"
                            "020BBEA63B139B22514A08798E3404DDEF9519B3CD3A431B302B0A6DF25F1437"
                            "4FE1356D6D51C245E485B576625E7EC6F44C42E9A63A3620FFFFFFFFFFFFFFFF";

void Prepare(CDiffieHellman& side) {
    side.SetG(CByteStream("00000002"));
    side.SetN(CByteStream(kModulus));
    side.SetExponentLength(256);
    side.GenerateX();
}

} // namespace

int main() {
    try {
        CDiffieHellman ours, theirs;
        Prepare(ours);
        Prepare(theirs); // the peer does this on its machine
        ours.SetY(theirs.GetX(-1));
        theirs.SetY(ours.GetX(-1));
        ours.ComputeK();
        theirs.ComputeK();
        std::printf("the two keys are %s, %u bytes\n",
                    ours.GetK(-1) == theirs.GetK(-1) ? "the same" : "different",
                    ours.GetK(-1).GetLength());

        CByteStore text(reinterpret_cast<const BYTE*>("attack at dawn!!"), 16), secret, plain;
        const CByteStream key = ours.GetK(-1).Left(8), vector("0000000000000000");
        text.Encrypt(key, vector, CDES::eCBC, false, secret);
        secret.Decrypt(theirs.GetK(-1).Left(8), vector, CDES::eCBC, false, plain);
        std::printf("deciphered, the text is %s\n", plain == text ? "the same" : "different");
        return 0;
    } catch (CException* error) {
        error->Delete();
        return 1;
    }
}
