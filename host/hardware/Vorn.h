// A slot's access to its bus, and how it is described.
#pragma once

#include "host/hardware/VornRequest.h"
#include "host/kex/notify/PtrInterface.h"

namespace Hardware {

/// Makes requests on one bus.
class KEX_API Vorn final : public Kex::PtrInterface {
 public:
  static Kex::KexType& _fwkType();

  explicit Vorn(Kex::Ptr<Smbus::Bus> bus) : bus_(std::move(bus)) {}
  Kex::KexType& fwkType() const override;
  ~Vorn() override;

  /// A new request, loaded with nothing.
  Kex::Ptr<VornRequest> newRequest() const { return Kex::make<VornRequest>(bus_); }
  Kex::Ptr<Smbus::Bus> const& bus() const { return bus_; }

 private:
  Kex::Ptr<Smbus::Bus> bus_;
};

/// Describes a bus access.
class KEX_API VornDesc : public Kex::PtrInterface {
 public:
  static Kex::KexType& _fwkType();

  explicit VornDesc(Kex::Ptr<Vorn> vorn) : vorn_(std::move(vorn)) {}
  Kex::KexType& fwkType() const override;
  ~VornDesc() override;

  Kex::Ptr<Vorn> const& vorn() const { return vorn_; }

 private:
  Kex::Ptr<Vorn> vorn_;
};

}  // namespace Hardware

namespace SmbusVorn {

/// Describes an SMBus access.
class KEX_API VornDesc final : public Hardware::VornDesc {
 public:
  static Kex::KexType& _fwkType();

  using Hardware::VornDesc::VornDesc;
  Kex::KexType& fwkType() const override;
  ~VornDesc() override;
};

}  // namespace SmbusVorn
