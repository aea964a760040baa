// SPDX-License-Identifier: GPL-2.0
/*
 * i2c adapters with one simulated power supply each, for tests of psu-agent on a real kernel.
 *
 * The supply answers at 0x58: command 0x99 with its MFR_ID, a process call {1, offset} on 0xB0 with
 * 16 bytes of the FRU image, which the parameter "image" gives in hexadecimal digits. Another image
 * that is written to the parameter puts other supplies in place of those that are there. Of adapters
 * of the first kind there are further ones, as many as the parameter "spares" says.
 */
#include <linux/completion.h>
#include <linux/i2c.h>
#include <linux/kernel.h>
#include <linux/module.h>
#include <linux/slab.h>

#define SUPPLY 0x58
#define CMD_MFR_ID 0x99
#define CMD_FRU 0xB0
#define CHUNK 16

static const char mfr_id[] = "EMERSON";

static u8 fru[256];

static int image_set(const char *digits, const struct kernel_param *param)
{
	size_t length = strcspn(digits, "\n");
	u8 bytes[sizeof(fru)];

	memset(bytes, 0xFF, sizeof(bytes));
	if (length == 0 || length % 2 || length > 2 * sizeof(bytes) ||
	    hex2bin(bytes, digits, length / 2)) {
		pr_err("psu_test_adapters: image is no FRU image in hexadecimal digits\n");
		return -EINVAL;
	}
	memcpy(fru, bytes, sizeof(fru));
	return 0;
}

static const struct kernel_param_ops image_ops = { .set = image_set };
module_param_cb(image, &image_ops, NULL, 0200);
MODULE_PARM_DESC(image, "FRU image in hexadecimal digits");

static unsigned int spares;
module_param(spares, uint, 0444);
MODULE_PARM_DESC(spares, "how many further adapters there are, named \"test spare N\"");

/*
 * Fills block (count first) with what the supply answers; write, which may be the same memory, is
 * null for a plain block read.
 */
static int answer(u8 command, const u8 *write, u8 *block)
{
	u8 start = write ? write[1] : 0;
	int i;

	if (command == CMD_MFR_ID && !write) {
		block[0] = sizeof(mfr_id) - 1;
		memcpy(block + 1, mfr_id, block[0]);
		return 0;
	}
	if (command == CMD_FRU && write && write[0] == 1) {
		block[0] = CHUNK;
		for (i = 0; i < CHUNK; i++)
			block[1 + i] = fru[(start + i) % sizeof(fru)];
		return 0;
	}
	return -ENXIO;
}

static int smbus_xfer(struct i2c_adapter *adapter, u16 address, unsigned short flags,
		      char read_write, u8 command, int size, union i2c_smbus_data *data)
{
	if (address != SUPPLY)
		return -ENXIO;
	if (size == I2C_SMBUS_BLOCK_DATA && read_write == I2C_SMBUS_READ)
		return answer(command, NULL, data->block);
	if (size == I2C_SMBUS_BLOCK_PROC_CALL)
		return answer(command, data->block, data->block);
	return -EOPNOTSUPP;
}

/* A write of the command and perhaps a block, then a read; the line floats high after the reply. */
static int plain_xfer(struct i2c_adapter *adapter, struct i2c_msg *messages, int count)
{
	u8 block[I2C_SMBUS_BLOCK_MAX + 1];
	int error, i;

	if (count != 2 || messages[0].flags & I2C_M_RD || !(messages[1].flags & I2C_M_RD) ||
	    messages[0].addr != SUPPLY || messages[1].addr != SUPPLY || messages[0].len == 0)
		return -ENXIO;
	error = answer(messages[0].buf[0], messages[0].len == 3 ? messages[0].buf + 1 : NULL, block);
	if (error)
		return error;
	for (i = 0; i < messages[1].len; i++)
		messages[1].buf[i] = i <= block[0] ? block[i] : 0xFF;
	return count;
}

/* Knows replies of unknown length: the kernel makes block calls of them. */
static int block_xfer(struct i2c_adapter *adapter, struct i2c_msg *messages, int count)
{
	int done;

	if (count != 2 || !(messages[1].flags & I2C_M_RECV_LEN))
		return plain_xfer(adapter, messages, count);
	messages[1].len = 1 + I2C_SMBUS_BLOCK_MAX;
	done = plain_xfer(adapter, messages, count);
	messages[1].len = 1 + (done == count ? messages[1].buf[0] : 0);
	return done;
}

/* Claims to have done what a reply of unknown length needs, and leaves the buffer as it was. */
static int hollow_xfer(struct i2c_adapter *adapter, struct i2c_msg *messages, int count)
{
	int i;

	for (i = 0; i < count; i++)
		if (messages[i].flags & I2C_M_RECV_LEN)
			return count;
	return plain_xfer(adapter, messages, count);
}

static int failing_xfer(struct i2c_adapter *adapter, struct i2c_msg *messages, int count)
{
	return -ETIMEDOUT;
}

static DECLARE_COMPLETION(never);

static int hanging_xfer(struct i2c_adapter *adapter, struct i2c_msg *messages, int count)
{
	return wait_for_completion_killable(&never);
}

static u32 smbus_functions(struct i2c_adapter *adapter)
{
	return I2C_FUNC_SMBUS_READ_BLOCK_DATA | I2C_FUNC_SMBUS_BLOCK_PROC_CALL;
}

static u32 plain_functions(struct i2c_adapter *adapter)
{
	return I2C_FUNC_I2C;
}

static u32 block_functions(struct i2c_adapter *adapter)
{
	return I2C_FUNC_I2C | I2C_FUNC_SMBUS_EMUL | I2C_FUNC_SMBUS_READ_BLOCK_DATA |
	       I2C_FUNC_SMBUS_BLOCK_PROC_CALL;
}

static u32 hollow_functions(struct i2c_adapter *adapter)
{
	return I2C_FUNC_I2C | I2C_FUNC_SMBUS_EMUL | I2C_FUNC_SMBUS_READ_BLOCK_DATA;
}

static u32 poor_functions(struct i2c_adapter *adapter)
{
	return I2C_FUNC_SMBUS_READ_BLOCK_DATA | I2C_FUNC_SMBUS_BYTE_DATA;
}

static const struct i2c_algorithm smbus = { .smbus_xfer = smbus_xfer,
					    .functionality = smbus_functions };
static const struct i2c_algorithm plain = { .master_xfer = plain_xfer,
					    .functionality = plain_functions };
static const struct i2c_algorithm block = { .master_xfer = block_xfer,
					    .functionality = block_functions };
static const struct i2c_algorithm hollow = { .master_xfer = hollow_xfer,
					     .functionality = hollow_functions };
static const struct i2c_algorithm failing = { .master_xfer = failing_xfer,
					      .functionality = plain_functions };
static const struct i2c_algorithm hanging = { .master_xfer = hanging_xfer,
					      .functionality = plain_functions };
static const struct i2c_algorithm poor = { .smbus_xfer = smbus_xfer,
					   .functionality = poor_functions };

/* The adapters are i2c-0, i2c-1, ... in this order. */
static struct i2c_adapter adapters[] = {
	{ .owner = THIS_MODULE, .name = "test SMBus", .algo = &smbus },
	{ .owner = THIS_MODULE, .name = "test plain I2C", .algo = &plain },
	{ .owner = THIS_MODULE, .name = "test hollow RECV_LEN", .algo = &hollow },
	{ .owner = THIS_MODULE, .name = "test failing", .algo = &failing },
	{ .owner = THIS_MODULE, .name = "test hanging", .algo = &hanging },
	{ .owner = THIS_MODULE, .name = "test poor", .algo = &poor },
	{ .owner = THIS_MODULE, .name = "test held", .algo = &plain },
	{ .owner = THIS_MODULE, .name = "test block calls over I2C", .algo = &block },
};
#define HELD 6

static struct i2c_adapter *spare;
static struct i2c_client *holder;

static void remove_adapters(struct i2c_adapter *first, int count)
{
	while (count-- > 0)
		i2c_del_adapter(&first[count]);
}

/* Adds the adapters, all or none. */
static int add_adapters(struct i2c_adapter *first, int count)
{
	int error, i;

	for (i = 0; i < count; i++) {
		error = i2c_add_numbered_adapter(&first[i]);
		if (error) {
			remove_adapters(first, i);
			return error;
		}
	}
	return 0;
}

static int __init psu_test_init(void)
{
	int error, i;

	spare = kcalloc(spares, sizeof(*spare), GFP_KERNEL);
	if (!spare)
		return -ENOMEM;
	for (i = 0; i < ARRAY_SIZE(adapters); i++)
		adapters[i].nr = i;
	for (i = 0; i < spares; i++) {
		spare[i].owner = THIS_MODULE;
		spare[i].algo = &smbus;
		spare[i].nr = ARRAY_SIZE(adapters) + i;
		snprintf(spare[i].name, sizeof(spare[i].name), "test spare %d", i);
	}
	error = add_adapters(adapters, ARRAY_SIZE(adapters));
	if (error)
		goto without_adapters;
	error = add_adapters(spare, spares);
	if (error)
		goto without_spares;
	holder = i2c_new_dummy_device(&adapters[HELD], SUPPLY);
	if (!IS_ERR(holder))
		return 0;
	error = PTR_ERR(holder);
	remove_adapters(spare, spares);
without_spares:
	remove_adapters(adapters, ARRAY_SIZE(adapters));
without_adapters:
	kfree(spare);
	return error;
}
module_init(psu_test_init);

static void __exit psu_test_exit(void)
{
	i2c_unregister_device(holder);
	remove_adapters(spare, spares);
	remove_adapters(adapters, ARRAY_SIZE(adapters));
	kfree(spare);
}
module_exit(psu_test_exit);

MODULE_DESCRIPTION("i2c adapters with a simulated power supply");
MODULE_LICENSE("GPL");
